// The platform's sysinfo parser library: the I2C topology by device type.
//
// The library allocates the records and owns them. A reader follows the pointers and hands the root
// back. The assertions below pin the library's layout on 64-bit targets.
#pragma once

#include <cstddef>
#include <cstdint>

/// A node behind an index node.
struct SubIndexNodeInfo {
    std::uint8_t discoverable{};    ///< 1 when the node can be discovered
    std::int32_t subIndex{};        ///< position below the index node
    std::int32_t subNodeCount{};    ///< number of nodes below this one
    std::int32_t reserved{};        ///< not for readers
    char name[24]{};                ///< NUL-terminated unless it fills the field
    const SubIndexNodeInfo* next{}; ///< null at the end
};

/// An index node: one device slot behind a physical bus.
struct IndexNodeInfo {
    std::uint8_t discoverable{};        ///< 1 when the node can be discovered
    std::uint8_t picpwrId{};            ///< PICPWR slot, 0 when it has none
    std::uint8_t isSlSrc{};             ///< non-zero when the node is an SL source
    std::uint8_t slSrc{};               ///< SL source number
    std::uint16_t hwUid{};              ///< hardware UID
    std::int32_t index{};               ///< the node's index
    std::int32_t slotNumber{};          ///< the platform's slot number
    std::int32_t slotType{};            ///< the platform's slot type
    std::int32_t physicalBus{};         ///< the N of /dev/i2c-N
    std::int32_t subNodeCount{};        ///< number of nodes below this one
    std::int32_t reserved{};            ///< not for readers
    char name[16]{};                    ///< NUL-terminated unless it fills the field
    const SubIndexNodeInfo* subNodes{}; ///< null when there is none
    std::uint64_t reservedForLibrary{}; ///< not for readers
    const IndexNodeInfo* next{};        ///< null at the end
    std::uint8_t bayId{};               ///< bay number
};

/// The root of one device type's topology.
struct SysInfoTree {
    std::uint64_t reservedForLibrary[3]{}; ///< not for readers
    const IndexNodeInfo* indexNodes{};     ///< null when the type has no nodes
};

static_assert(sizeof(void*) == 8, "the records are those of the 64-bit targets");
static_assert(offsetof(SysInfoTree, indexNodes) == 24);
static_assert(offsetof(IndexNodeInfo, discoverable) == 0);
static_assert(offsetof(IndexNodeInfo, picpwrId) == 1);
static_assert(offsetof(IndexNodeInfo, isSlSrc) == 2);
static_assert(offsetof(IndexNodeInfo, slSrc) == 3);
static_assert(offsetof(IndexNodeInfo, hwUid) == 4);
static_assert(offsetof(IndexNodeInfo, index) == 8);
static_assert(offsetof(IndexNodeInfo, slotNumber) == 12);
static_assert(offsetof(IndexNodeInfo, slotType) == 16);
static_assert(offsetof(IndexNodeInfo, physicalBus) == 20);
static_assert(offsetof(IndexNodeInfo, subNodeCount) == 24);
static_assert(offsetof(IndexNodeInfo, name) == 32);
static_assert(offsetof(IndexNodeInfo, subNodes) == 48);
static_assert(offsetof(IndexNodeInfo, next) == 64);
static_assert(offsetof(IndexNodeInfo, bayId) == 72);
static_assert(offsetof(SubIndexNodeInfo, discoverable) == 0);
static_assert(offsetof(SubIndexNodeInfo, subIndex) == 4);
static_assert(offsetof(SubIndexNodeInfo, subNodeCount) == 8);
static_assert(offsetof(SubIndexNodeInfo, name) == 16);
static_assert(offsetof(SubIndexNodeInfo, next) == 40);
static_assert(sizeof(IndexNodeInfo::name) == 16 && sizeof(SubIndexNodeInfo::name) == 24);

extern "C" {

/// Builds the topology of one device type.
///
/// @param deviceType  device-type code, 0 to 164.
/// @param root        receives the tree, which the library owns; hand it back to free_sysinfo.
/// @return 0 on success. Any other status, or a null root, means that the type has no data. Hand a
///         root back even when its status is not 0.
int i2c_parse_sysinfo(int deviceType, SysInfoTree** root);

/// Releases a tree. Accepts null.
void free_sysinfo(SysInfoTree* root);
}
