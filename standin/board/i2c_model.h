// The model of a board's I2C side: its buses with what is on them, and its topology.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace standin {

/// A property of a bus or of a device on it, by the driver's number.
using I2cProperties = std::map<std::uint32_t, std::uint32_t>;

/// The device node of a device that has one from the start.
struct I2cDeviceNode {
    std::uint8_t deviceType = 0;
    std::uint32_t index = 0;
};

/// A device on a bus: with memory, a device node, or both.
struct I2cDevice {
    std::uint32_t address = 0;          ///< 7 bits
    std::vector<std::uint8_t> memory{}; ///< what plain transfers reach; empty: nothing
    std::uint32_t pointerWidth = 1;     ///< bytes of its register pointer, 1 or 2
    bool readOnly = false;              ///< takes writes without keeping them
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
    std::int32_t physicalBus = -1; ///< below 0: none
    std::uint8_t bayId = 0;
    std::string name{};
    std::optional<std::int32_t> subNodeCount{}; ///< none: as many as there are
    std::optional<std::uint32_t> parent{};      ///< bus behind which the driver has this node
    std::vector<SubNode> subNodes{};
};

/// How the parser answers for a device type.
struct TypeAnswer {
    enum class Root : std::uint8_t {
        none,  ///< null
        empty, ///< a tree without nodes, whatever the board has
        nodes, ///< the type's nodes
    };
    std::int32_t status = 0;
    Root root = Root::nodes;
};

struct I2cDescription {
    std::vector<I2cBus> buses;
    std::vector<IndexNode> indexNodes; ///< of all types, in the order of the lists
    std::map<std::uint8_t, TypeAnswer>
        answers; ///< of a type without nodes: it is known all the same
};

} // namespace standin
