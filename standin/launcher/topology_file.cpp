#include "standin/launcher/topology_file.h"

#include "board/device_type.h"
#include "standin/image/topology.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <span>
#include <system_error>
#include <unistd.h>

namespace standin {

namespace {

template <std::size_t Size>
void setName(std::array<char, Size>& field, const std::string& name) {
    name.copy(field.data(), field.size());
}

std::span<const BusCoreBus> busesOf(const BusCore& core) {
    return {core.buses, core.busCount};
}

// Names the created index nodes. No two of them have the same name, and none has the name of a
// described node.
class NodeNames {
public:
    explicit NodeNames(const std::vector<board::IndexNode>& described) {
        for (const board::IndexNode& node : described) {
            taken_.insert(node.name);
        }
    }

    // Returns "TYPE_INDEX". The type is cut so that the name and its terminator fit the field; the
    // index stays whole. If another node has that name, the type ends with "~2", "~3" and so on.
    // 15 bytes hold the longest index behind "~256_", and there are at most 256 created nodes.
    std::string add(const std::string& type, std::uint32_t index) {
        const std::string end = std::string("_").append(std::to_string(index));
        std::string name = type.substr(0, longest - end.size()) + end;
        for (int number = 2; !taken_.insert(name).second; ++number) {
            const std::string tail = std::string("~").append(std::to_string(number)).append(end);
            name = type.substr(0, longest - std::min(longest, tail.size())) + tail;
        }
        return name;
    }

private:
    static constexpr std::size_t longest = sizeof(TopologyNode::name) - 1;

    std::set<std::string> taken_;
};

// The index nodes that were created at run time, in the form of described ones.
std::vector<board::IndexNode> createdNodes(const board::Board& board, const BusCore& core) {
    std::set<std::int64_t> described;
    for (const board::IndexNode& node : board.i2c.indexNodes) {
        described.insert(node.physicalBus);
    }
    std::vector<board::IndexNode> nodes;
    NodeNames names(board.i2c.indexNodes);
    for (const BusCoreBus& bus : busesOf(core)) {
        const auto type = board::deviceTypeCode(bus.typeName);
        if (bus.isIndexNode && type && !described.contains(bus.number)) {
            nodes.push_back({
                .deviceType = *type,
                .index = static_cast<std::int32_t>(bus.index),
                .physicalBus = static_cast<std::int32_t>(bus.number),
                .name = names.add(bus.typeName, bus.index),
            });
        }
    }
    return nodes;
}

// The device nodes of a bus by address, each under its Linux name, like "20-0050".
std::vector<board::SubNode> deviceNodes(const BusCore& core, std::int32_t bus) {
    std::vector<BusCoreDevice> devices;
    std::ranges::copy_if(std::span(core.devices, core.deviceCount), std::back_inserter(devices),
                         [&](const BusCoreDevice& device) {
                             return device.hasNode && std::int64_t{device.bus} == bus;
                         });
    std::ranges::sort(devices, {}, &BusCoreDevice::address);
    std::vector<board::SubNode> nodes;
    for (const BusCoreDevice& device : devices) {
        std::array<char, sizeof(TopologySub::name)> name{};
        (void)std::snprintf(name.data(), name.size(), "%u-%04x", device.bus, device.address);
        nodes.push_back({.subIndex = static_cast<std::int32_t>(device.index), .name = name.data()});
    }
    return nodes;
}

// The parts of the file, filled node by node.
class Layout {
public:
    explicit Layout(const BusCore& core) : core_(&core) {}

    void addType(std::uint8_t type, const std::vector<board::IndexNode>& all) {
        TopologyType& entry = header_.types[type];
        entry.firstNode = static_cast<std::uint32_t>(nodes_.size());
        for (const board::IndexNode& node : all) {
            if (node.deviceType == type) {
                addNode(node);
            }
        }
        entry.nodeCount = static_cast<std::uint32_t>(nodes_.size()) - entry.firstNode;
    }

    void setAnswer(std::uint8_t type, const board::TypeAnswer& answer) {
        TopologyType& entry = header_.types[type];
        entry.status = answer.status;
        entry.hasRoot = answer.root == board::TypeAnswer::Root::none ? 0 : 1;
        if (answer.root == board::TypeAnswer::Root::empty) {
            entry.nodeCount = 0;
        }
    }

    [[nodiscard]] bool hasNodes(std::uint8_t type) const {
        return header_.types[type].nodeCount != 0;
    }

    [[nodiscard]] std::vector<std::byte> content() {
        header_.magic = TopologyHeader::expectedMagic;
        header_.nodeCount = static_cast<std::uint32_t>(nodes_.size());
        header_.subCount = static_cast<std::uint32_t>(subs_.size());
        std::vector<std::byte> content;
        for (const auto part :
             {std::as_bytes(std::span(&header_, 1)), std::as_bytes(std::span(nodes_)),
              std::as_bytes(std::span(subs_))}) {
            content.insert(content.end(), part.begin(), part.end());
        }
        return content;
    }

private:
    void addNode(const board::IndexNode& node) {
        std::vector<board::SubNode> subNodes = node.subNodes;
        // Several described nodes may share a bus; the first one lists its device nodes.
        if (node.hasBus() && shownBuses_.insert(node.physicalBus).second) {
            std::ranges::move(deviceNodes(*core_, node.physicalBus), std::back_inserter(subNodes));
        }
        TopologyNode record{
            .discoverable = node.discoverable,
            .picpwrId = node.picpwrId,
            .isSlSrc = node.isSlSrc,
            .slSrc = node.slSrc,
            .hwUid = node.hwUid,
            .bayId = node.bayId,
            .unused = 0,
            .index = node.index,
            .slotNumber = node.slotNumber,
            .slotType = node.slotType,
            .physicalBus = node.physicalBus,
            .subNodeCount = node.subNodeCount.value_or(static_cast<std::int32_t>(subNodes.size())),
            .firstSub = static_cast<std::uint32_t>(subs_.size()),
            .subCount = static_cast<std::uint32_t>(subNodes.size()),
            .name = {},
        };
        setName(record.name, node.name);
        nodes_.push_back(record);
        for (const board::SubNode& sub : subNodes) {
            TopologySub subRecord{.discoverable = sub.discoverable,
                                  .unused = {},
                                  .subIndex = sub.subIndex,
                                  .subNodeCount = sub.subNodeCount,
                                  .name = {}};
            setName(subRecord.name, sub.name);
            subs_.push_back(subRecord);
        }
    }

    const BusCore* core_;
    TopologyHeader header_{};
    std::vector<TopologyNode> nodes_;
    std::vector<TopologySub> subs_;
    std::set<std::int32_t> shownBuses_;
};

constexpr board::TypeAnswer unknownType{.status = -2,
                                        .root = board::TypeAnswer::Root::none}; // ENOENT

board::TypeAnswer answerFor(const board::Board& board, std::uint8_t type, bool hasNodes) {
    board::TypeAnswer answer = hasNodes ? board::TypeAnswer{} : unknownType;
    if (const auto found = board.i2c.answers.find(type); found != board.i2c.answers.end()) {
        answer = found->second;
    }
    return answer;
}

} // namespace

std::vector<std::byte> topologyOf(const board::Board& board, const BusCore& core) {
    std::vector<board::IndexNode> nodes = board.i2c.indexNodes;
    std::ranges::move(createdNodes(board, core), std::back_inserter(nodes));
    Layout layout(core);
    for (std::uint8_t type = 0; type < topologyTypes; ++type) {
        layout.addType(type, nodes);
        layout.setAnswer(type, answerFor(board, type, layout.hasNodes(type)));
    }
    return layout.content();
}

void replaceFile(const std::string& path, const std::vector<std::byte>& content) {
    const std::string next = path + ".next";
    const int file = open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const ssize_t written = file < 0 ? -1 : write(file, content.data(), content.size());
    const int error = errno;
    if (file >= 0) {
        close(file);
    }
    if (written != static_cast<ssize_t>(content.size())) {
        throw std::system_error(written < 0 ? error : ENOSPC, std::generic_category(), next);
    }
    if (rename(next.c_str(), path.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

} // namespace standin
