// The stand-in's sysinfo parser library: reads the topology file that zolt_sim writes.
//
// Each parse reads the file again, because nodes come and go while the board runs.
#include "platform/sysinfo.h"

#include "standin/i2c_bus/server/descriptor.h"
#include "standin/image/image.h"
#include "standin/image/image_reader.h"
#include "standin/image/topology.h"
#include "standin/lib/call_end.h"
#include "standin/lib/log_file.h"
#include "standin/lib/status.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace standin;

// A root that owns the records of its tree. free_sysinfo() deletes them together.
struct Tree : SysInfoTree {
    std::vector<IndexNodeInfo> nodes;
    std::vector<SubIndexNodeInfo> subNodes;
};

struct Topology {
    TopologyHeader header{};
    std::vector<TopologyNode> nodes;
    std::vector<TopologySub> subs;
};

// Whether [first, first + count) lies within [0, all).
bool isWithin(std::uint32_t first, std::uint32_t count, std::size_t all) {
    return first <= all && count <= all - first;
}

template <typename T>
bool readAll(int file, std::span<T> items) {
    auto bytes = std::as_writable_bytes(items);
    while (!bytes.empty()) {
        const ssize_t count = read(file, bytes.data(), bytes.size());
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool readTopology(int file, Topology& topology) {
    TopologyHeader& header = topology.header;
    struct stat status {};
    if (fstat(file, &status) != 0 || !readAll(file, std::span(&header, 1)) ||
        header.magic != TopologyHeader::expectedMagic) {
        return false;
    }
    // The sum has 64 bits, so that it cannot wrap and let wrong counts pass.
    const std::uint64_t expected = sizeof header +
                                   std::uint64_t{header.nodeCount} * sizeof(TopologyNode) +
                                   std::uint64_t{header.subCount} * sizeof(TopologySub);
    if (static_cast<std::uint64_t>(status.st_size) != expected) {
        return false;
    }
    topology.nodes.resize(header.nodeCount);
    topology.subs.resize(header.subCount);
    return readAll(file, std::span(topology.nodes)) && readAll(file, std::span(topology.subs));
}

std::optional<Topology> publishedTopology(int& status) {
    const char* const directory = std::getenv(boardDirectoryVariable);
    const std::string path =
        directory == nullptr ? std::string() : std::string(directory) + "/" + topologyFileName;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number() < 0) {
        status = noBoard;
        return std::nullopt;
    }
    Topology topology;
    status = readTopology(file.number(), topology) ? 0 : badTopology;
    return status == 0 ? std::optional(std::move(topology)) : std::nullopt;
}

template <std::size_t Size>
void copyName(char (&field)[Size], const std::array<char, Size>& name) {
    std::ranges::copy(name, field);
}

IndexNodeInfo nodeInfo(const TopologyNode& node) {
    IndexNodeInfo info{
        .discoverable = node.discoverable,
        .picpwrId = node.picpwrId,
        .isSlSrc = node.isSlSrc,
        .slSrc = node.slSrc,
        .hwUid = node.hwUid,
        .index = node.index,
        .slotNumber = node.slotNumber,
        .slotType = node.slotType,
        .physicalBus = node.physicalBus,
        .subNodeCount = node.subNodeCount,
        .bayId = node.bayId,
    };
    copyName(info.name, node.name);
    return info;
}

SubIndexNodeInfo subInfo(const TopologySub& sub) {
    SubIndexNodeInfo info{
        .discoverable = sub.discoverable,
        .subIndex = sub.subIndex,
        .subNodeCount = sub.subNodeCount,
    };
    copyName(info.name, sub.name);
    return info;
}

// Null when a range in the file reaches beyond the records.
std::unique_ptr<Tree> treeOf(const Topology& topology, const TopologyType& type) {
    auto tree = std::make_unique<Tree>();
    if (!isWithin(type.firstNode, type.nodeCount, topology.nodes.size())) {
        return nullptr;
    }
    const auto nodes = std::span(topology.nodes).subspan(type.firstNode, type.nodeCount);
    std::size_t subNodes = 0;
    for (const TopologyNode& node : nodes) {
        if (!isWithin(node.firstSub, node.subCount, topology.subs.size())) {
            return nullptr;
        }
        subNodes += node.subCount;
    }
    // Nodes do not share sub nodes: a sum above the total shows a damaged file.
    if (subNodes > topology.subs.size()) {
        return nullptr;
    }
    tree->nodes.reserve(nodes.size()); // the records point at each other and must not move
    tree->subNodes.reserve(subNodes);
    for (const TopologyNode& node : nodes) {
        IndexNodeInfo& info = tree->nodes.emplace_back(nodeInfo(node));
        const SubIndexNodeInfo** next = &info.subNodes;
        for (const TopologySub& sub :
             std::span(topology.subs).subspan(node.firstSub, node.subCount)) {
            SubIndexNodeInfo& added = tree->subNodes.emplace_back(subInfo(sub));
            *next = &added;
            next = &added.next;
        }
    }
    for (std::size_t i = 1; i < tree->nodes.size(); ++i) {
        tree->nodes[i - 1].next = &tree->nodes[i];
    }
    tree->indexNodes = tree->nodes.empty() ? nullptr : tree->nodes.data();
    return tree;
}

int parse(int deviceType, SysInfoTree** root) {
    if (deviceType < 0 || static_cast<std::size_t>(deviceType) >= topologyTypes) {
        return badArgument;
    }
    const auto* const image = ImageReader::attached();
    int status =
        image == nullptr ? 0 : awaitEnd(image->endOfParsing(static_cast<std::size_t>(deviceType)));
    if (status != 0) {
        return status;
    }
    const auto topology = publishedTopology(status);
    if (!topology) {
        return status;
    }
    const TopologyType& type = topology->header.types[static_cast<std::size_t>(deviceType)];
    if (type.hasRoot != 0) {
        auto tree = treeOf(*topology, type);
        if (tree == nullptr) {
            return badTopology;
        }
        *root = tree.release();
    }
    return type.status;
}

} // namespace

int i2c_parse_sysinfo(int deviceType, SysInfoTree** root) {
    *root = nullptr;
    const int status = parse(deviceType, root);
    logCall("i2c_parse_sysinfo %d = %d %s", deviceType, status, *root == nullptr ? "none" : "tree");
    return status;
}

void free_sysinfo(SysInfoTree* root) {
    logCall("free_sysinfo %s", root == nullptr ? "none" : "tree");
    delete static_cast<Tree*>(root);
}
