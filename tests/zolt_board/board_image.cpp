#include "tests/zolt_board/board_image.h"

#include "board/cpld_contents.h"
#include "board/cpld_map.h"
#include "board/published_board.h"
#include "board/value_writer.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace zolt_board::test {

namespace {

using Lines = std::vector<std::string>;

template <typename... Words>
void add(Lines& lines, const Words&... words) {
    std::ostringstream line;
    ((line << words << ' '), ...);
    lines.push_back(line.str());
}

void addRegisters(const board::Board& board, Lines& lines) {
    const board::CpldContents contents = deriveCpldContents(board);
    for (const auto& [name, bytes] : contents.named) {
        add(lines, "named", name, board::hexText(bytes));
    }
    for (std::size_t address = 0; address < contents.raw.size(); ++address) {
        if (contents.raw[address] != 0) {
            add(lines, "raw", address, int{contents.raw[address]});
        }
    }
    for (const auto& [name, object] : board.halObjects) {
        add(lines, "hal", name, object.interruptCallback, object.unregisterStatus,
            std::min(object.mostBytes, board::payloadBlockSize));
    }
}

void addService(const board::Board& board, Lines& lines) {
    const board::ServiceModel model = publishBoard(board);
    Lines properties;
    for (const board::PublishedInterface& published : model.interfaces) {
        add(properties, published.path, published.interface);
        for (const board::Property& property : published.properties) {
            add(properties, published.path, published.interface, property.name, property.signature,
                board::tomlText(board::written(property.value)));
        }
    }
    std::ranges::sort(properties);
    std::ranges::move(properties, std::back_inserter(lines));
    for (const board::ServiceOrder& order : board.service.orders) {
        const bool isError = order.action == board::ServiceOrder::Action::error;
        add(lines, "order", order.path, order.interface, order.after, order.delay.count(),
            static_cast<int>(order.action), isError ? order.name : "", isError ? order.text : "",
            order.signature,
            order.signature.empty() ? "" : board::tomlText(board::written(order.value)));
    }
}

void addFaults(const board::Board& board, Lines& lines) {
    for (const board::FaultRule& rule : board.faults) {
        add(lines, "fault", static_cast<int>(rule.kind), rule.subject, rule.first, rule.last,
            rule.status, rule.error, rule.after, rule.times, rule.untilRecovery, rule.delay,
            rule.bus, rule.operation, rule.selector.value_or(0), rule.selector.has_value(),
            int{rule.deviceType});
    }
}

void addDevice(std::uint32_t bus, const board::I2cDevice& device, Lines& lines) {
    add(lines, "device", bus, device.address, device.pointerWidth, device.readOnly,
        board::hexText(device.memory), device.node.has_value());
    if (device.node) {
        add(lines, "device node", bus, device.address, int{device.node->deviceType},
            device.node->index);
    }
    for (const auto& [id, value] : device.properties) {
        add(lines, "device property", bus, device.address, id, value);
    }
}

void addBuses(const board::I2cDescription& i2c, Lines& lines) {
    Lines unordered;
    std::set<std::int64_t> buses;
    for (const board::I2cBus& bus : i2c.buses) {
        buses.insert(bus.number);
        for (const auto& [id, value] : bus.properties) {
            add(unordered, "bus property", bus.number, id, value);
        }
        for (const board::I2cDevice& device : bus.devices) {
            addDevice(bus.number, device, unordered);
        }
    }
    std::set<std::int32_t> listed;
    for (const board::IndexNode& node : i2c.indexNodes) {
        if (node.hasBus()) {
            buses.insert(node.physicalBus);
            if (listed.insert(node.physicalBus).second) {
                add(unordered, "first node of", node.physicalBus, int{node.deviceType}, node.index);
            }
        }
    }
    for (const std::int64_t bus : buses) {
        add(unordered, "bus", bus);
    }
    std::ranges::sort(unordered);
    std::ranges::move(unordered, std::back_inserter(lines));
}

void addTopology(const board::I2cDescription& i2c, Lines& lines) {
    std::map<unsigned, Lines> nodes; // by device type
    for (const board::IndexNode& node : i2c.indexNodes) {
        Lines& ofType = nodes[node.deviceType];
        add(ofType, "node", int{node.deviceType}, int{node.discoverable}, int{node.picpwrId},
            int{node.isSlSrc}, int{node.slSrc}, node.hwUid, node.index, node.slotNumber,
            node.slotType, node.physicalBus, int{node.bayId}, node.name,
            node.subNodeCount.value_or(0), node.subNodeCount.has_value(), node.parent.value_or(0),
            node.parent.has_value());
        for (const board::SubNode& sub : node.subNodes) {
            add(ofType, "sub", int{sub.discoverable}, sub.subIndex, sub.subNodeCount, sub.name);
        }
    }
    for (const auto& [type, ofType] : nodes) {
        lines.insert(lines.end(), ofType.begin(), ofType.end());
    }
    for (unsigned type = 0; type < 165; ++type) {
        using Root = board::TypeAnswer::Root;
        const bool hasNodes = nodes.contains(type);
        board::TypeAnswer answer =
            hasNodes ? board::TypeAnswer{} : board::TypeAnswer{-2, Root::none};
        const auto found = i2c.answers.find(static_cast<std::uint8_t>(type));
        if (found != i2c.answers.end()) {
            answer = found->second;
        }
        const bool isEmpty = answer.root == Root::nodes && !hasNodes;
        add(lines, "parser", type, answer.status,
            static_cast<int>(isEmpty ? Root::empty : answer.root));
    }
}

} // namespace

std::vector<std::string> imageOf(const board::Board& board) {
    Lines lines;
    addRegisters(board, lines);
    addService(board, lines);
    addFaults(board, lines);
    addBuses(board.i2c, lines);
    addTopology(board.i2c, lines);
    return lines;
}

} // namespace zolt_board::test
