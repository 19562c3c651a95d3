#include "capture/describe_topology.h"

#include "board/device_type_word.h"
#include "board/utf8.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace capture {

namespace {

using board::DocumentTable;
using board::writtenDeviceType;
using board::WrittenNumber;

// A name that is no UTF-8 is written as its bytes.
void setName(const std::string& name, DocumentTable& table) {
    if (name.empty()) {
        return;
    }
    if (board::isUtf8(name)) {
        table.set("name", name);
        return;
    }
    board::WrittenList bytes;
    for (const char letter : name) {
        bytes.emplace_back(WrittenNumber{static_cast<unsigned char>(letter), 2});
    }
    table.set("name", std::move(bytes));
}

void setNumber(const char* key, std::int64_t value, DocumentTable& table, unsigned hexDigits = 0) {
    if (value != 0) {
        table.set(key, WrittenNumber{value, hexDigits});
    }
}

void setFlag(const char* key, std::uint8_t value, DocumentTable& table) {
    if (value == 1) {
        table.set(key, true);
    } else {
        setNumber(key, value, table);
    }
}

void writeNode(const board::IndexNode& node, DocumentTable& table) {
    table.set("device_type", writtenDeviceType(node.deviceType));
    setNumber("index", node.index, table);
    setName(node.name, table);
    setFlag("discoverable", node.discoverable, table);
    if (node.physicalBus != -1) {
        table.set("physical_bus", WrittenNumber{node.physicalBus});
    }
    setNumber("picpwr", node.picpwrId, table);
    setFlag("is_sl_src", node.isSlSrc, table);
    setNumber("sl_src", node.slSrc, table);
    setNumber("hw_uid", node.hwUid, table, 4);
    setNumber("slot_number", node.slotNumber, table);
    setNumber("slot_type", node.slotType, table);
    setNumber("bay_id", node.bayId, table);
    if (node.subNodeCount && *node.subNodeCount != std::ssize(node.subNodes)) {
        table.set("sub_node_count", WrittenNumber{*node.subNodeCount});
    }
    for (const board::SubNode& sub : node.subNodes) {
        DocumentTable& written = table.append("sub");
        setNumber("sub_index", sub.subIndex, written);
        setName(sub.name, written);
        setFlag("discoverable", sub.discoverable, written);
        setNumber("sub_node_count", sub.subNodeCount, written);
    }
}

// The stand-in's parser answers so for a type without nodes that has no answer of its own.
constexpr std::int32_t unknownType = -2; // ENOENT

void writeAnswer(std::uint8_t type, const TopologyReading& reading, DocumentTable& i2c) {
    const bool hasNodes = !reading.nodes.empty();
    const bool isUsual =
        hasNodes ? reading.status == 0 : reading.status == unknownType && !reading.hasRoot;
    if (isUsual) {
        return;
    }
    DocumentTable& table = i2c.append("type");
    table.set("device_type", writtenDeviceType(type));
    setNumber("status", reading.status, table);
    const char* const root = reading.hasRoot ? "empty" : "none";
    const bool isDefault = reading.status != 0 && !reading.hasRoot;
    if (!isDefault) {
        table.set("root", root);
    }
}

bool wasRead(const NodePropertyReading& reading) {
    return reading.opened && reading.error == 0;
}

// Buses and devices with the properties that were read. A device is known only by its properties,
// so it gets one byte of memory: a description has no device without memory and without a node.
void writeProperties(const std::vector<NodePropertyReading>& readings, DocumentTable& i2c) {
    std::map<std::uint32_t, std::map<std::uint32_t, board::WrittenRow>> buses;
    for (const NodePropertyReading& reading : readings) {
        if (reading.opened) {
            board::WrittenRow& row = buses[reading.bus][reading.target];
            if (wasRead(reading)) {
                row.emplace_back(std::to_string(reading.id), WrittenNumber{reading.value});
            }
        }
    }
    for (auto& [number, targets] : buses) {
        DocumentTable& bus = i2c.append("bus");
        bus.set("number", WrittenNumber{number});
        for (auto& [target, row] : targets) {
            if (row.empty()) {
                continue;
            }
            if (target == 0) {
                bus.set("properties", std::move(row));
                continue;
            }
            DocumentTable& device = bus.append("device");
            device.set("address", WrittenNumber{target, 2});
            device.set("size", WrittenNumber{1});
            device.set("properties", std::move(row));
        }
    }
}

// Whether another node of the bus has delivered the property. A rule fits the property of all nodes
// of a bus, and must not take that read away. A device without the property fails by itself.
bool isReadElsewhere(const NodePropertyReading& failed,
                     const std::vector<NodePropertyReading>& readings) {
    return std::ranges::any_of(readings, [&](const NodePropertyReading& other) {
        return other.bus == failed.bus && other.id == failed.id && wasRead(other);
    });
}

std::string errorName(int error) {
    const char* const name = strerrorname_np(error);
    return name == nullptr ? "EIO" : name;
}

} // namespace

void writeI2c(const Observation& observation, DocumentTable& root) {
    DocumentTable& i2c = root.table("i2c");
    writeProperties(observation.nodeProperties, i2c);
    for (const TopologyReading& reading : observation.topology) {
        for (const board::IndexNode& node : reading.nodes) {
            writeNode(node, i2c.append("index_node"));
        }
    }
    std::uint8_t type = 0;
    for (const TopologyReading& reading : observation.topology) {
        writeAnswer(type++, reading, i2c);
    }
}

std::vector<std::string> propertyFaults(const Observation& observation) {
    std::vector<std::string> rules;
    for (const NodePropertyReading& reading : observation.nodeProperties) {
        std::string rule;
        if (!reading.opened) {
            rule = std::string("i2c-open ").append(std::to_string(reading.bus));
        } else if (reading.error != 0 && !isReadElsewhere(reading, observation.nodeProperties)) {
            rule = std::string("i2c-ioctl ").append(std::to_string(reading.bus));
            rule.append(" get-property ").append(std::to_string(reading.id));
        } else {
            continue;
        }
        rule.append(" error ").append(errorName(reading.error));
        if (std::ranges::find(rules, rule) == rules.end()) {
            rules.push_back(std::move(rule));
        }
    }
    return rules;
}

std::vector<std::string> propertyFailures(const Observation& observation) {
    std::vector<std::string> failures;
    for (const NodePropertyReading& reading : observation.nodeProperties) {
        if (!wasRead(reading)) {
            std::string line = "property ";
            line.append(std::to_string(reading.bus)).append(":");
            line.append(std::to_string(reading.target)).append(":");
            line.append(std::to_string(reading.id)).append(": ");
            failures.push_back(line.append(errorName(reading.error)));
        }
    }
    return failures;
}

} // namespace capture
