// The model of a board's I2C side: its buses with their devices, and its topology.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace board {

constexpr std::int32_t highestBus = 1048575; ///< Linux has no minor number for a bus beyond this

/// The properties of a bus or of a device, by the driver's property number.
using I2cProperties = std::map<std::uint32_t, std::uint32_t>;

/// A device node that exists from the start.
struct I2cDeviceNode {
    std::uint8_t deviceType = 0;
    std::uint32_t index = 0;
};

/// A device on a bus. It has memory, a device node, or both.
struct I2cDevice {
    std::uint32_t address = 0;          ///< 7 bits
    std::vector<std::uint8_t> memory{}; ///< memory for plain transfers; may be empty
    std::uint32_t pointerWidth = 1;     ///< bytes of its register pointer, 1 or 2
    bool readOnly = false;              ///< accepts writes and drops them
    std::optional<I2cDeviceNode> node{};
    I2cProperties properties{};
};

struct I2cBus {
    std::uint32_t number = 0; ///< the N of /dev/i2c-N
    I2cProperties properties{};
    std::vector<I2cDevice> devices{};
};

/// A node behind an index node, with the fields of its record.
struct SubNode {
    std::uint8_t discoverable = 0;
    std::int32_t subIndex = 0;
    std::int32_t subNodeCount = 0;
    std::string name{};

    bool operator==(const SubNode&) const = default;
};

/// An index node, with the fields of its record.
struct IndexNode {
    std::uint8_t deviceType = 0;
    std::uint8_t discoverable = 0;
    std::uint8_t picpwrId = 0;
    std::uint8_t isSlSrc = 0;
    std::uint8_t slSrc = 0;
    std::uint16_t hwUid = 0;
    std::int32_t index = 0;
    std::int32_t slotNumber = 0;
    std::int32_t slotType = 0;
    std::int32_t physicalBus = -1; ///< hasBus() says whether there is such a bus
    std::uint8_t bayId = 0;
    std::string name{};
    std::optional<std::int32_t> subNodeCount{}; ///< none: the actual number
    std::optional<std::uint32_t> parent{};      ///< bus behind which the driver puts the node
    std::vector<SubNode> subNodes{};

    /// Linux has no bus with another number.
    [[nodiscard]] bool hasBus() const { return physicalBus >= 0 && physicalBus <= highestBus; }

    bool operator==(const IndexNode&) const = default;
};

/// How the parser answers for a device type.
struct TypeAnswer {
    enum class Root : std::uint8_t {
        none,  ///< null
        empty, ///< a tree without nodes, even if the type has some
        nodes, ///< the type's nodes
    };
    std::int32_t status = 0;
    Root root = Root::nodes;
};

struct I2cDescription {
    std::vector<I2cBus> buses;
    std::vector<IndexNode> indexNodes; ///< of all types, in the order of the lists
    std::map<std::uint8_t, TypeAnswer>
        answers; ///< by device type; a type without nodes may have an answer, too
};

} // namespace board
