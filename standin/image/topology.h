// The layout of the topology file, which the sysinfo parser library reads.
//
// zolt_sim writes the file into its private directory, and replaces it as a whole whenever the bus
// driver's nodes change. A process that has the file open keeps the old one. Numbers are in the
// machine's byte order.
//
//   TopologyHeader   with an answer for each device type
//   TopologyNode[]   index nodes, those of one type together, in the order of the type's list
//   TopologySub[]    sub nodes, those of one index node together
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace standin {

constexpr const char* topologyFileName = "topology"; ///< in the directory of the running board
constexpr std::size_t topologyTypes = 165;           ///< device types 0 to 164

/// How the parser answers for one device type.
struct TopologyType {
    std::int32_t status;
    std::uint32_t hasRoot;
    std::uint32_t firstNode;
    std::uint32_t nodeCount;
};

struct TopologyNode {
    std::uint8_t discoverable;
    std::uint8_t picpwrId;
    std::uint8_t isSlSrc;
    std::uint8_t slSrc;
    std::uint16_t hwUid;
    std::uint8_t bayId;
    std::uint8_t unused;
    std::int32_t index;
    std::int32_t slotNumber;
    std::int32_t slotType;
    std::int32_t physicalBus;
    std::int32_t subNodeCount;
    std::uint32_t firstSub;
    std::uint32_t subCount;
    std::array<char, 16> name; ///< padded with zeros
};

struct TopologySub {
    std::uint8_t discoverable;
    std::array<std::uint8_t, 3> unused;
    std::int32_t subIndex;
    std::int32_t subNodeCount;
    std::array<char, 24> name; ///< padded with zeros
};

struct TopologyHeader {
    static constexpr std::array<char, 8> expectedMagic{'Z', 'S', 'I', 'M', 'T', 'O', 'P', '1'};

    std::array<char, 8> magic;
    std::uint32_t nodeCount;
    std::uint32_t subCount;
    std::array<TopologyType, topologyTypes> types;
};

static_assert(sizeof(TopologyHeader) == 16 + 16 * topologyTypes);
static_assert(sizeof(TopologyNode) == 52 && sizeof(TopologySub) == 36);
static_assert(offsetof(TopologyNode, hwUid) == 4 && offsetof(TopologyNode, index) == 8);
static_assert(offsetof(TopologyNode, name) == 36 && offsetof(TopologySub, name) == 12);

} // namespace standin
