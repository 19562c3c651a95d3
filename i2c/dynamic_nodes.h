// Creates and removes nodes of the platform's I2C bus driver: options 9 and 10.
//
// An index node is a new bus that represents one device slot behind a parent bus. A device node is
// a device at a target address on an index node. All numbers go to the driver unchecked.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

constexpr std::uint32_t busNodeTarget = 0;           ///< target address of the bus node itself
constexpr std::uint32_t noAnswer = 0xFFFFFFFF;       ///< value of a property without an answer
constexpr std::uint32_t nodeNotCreated = 0xFFFFFFFF; ///< in place of an index node's bus number

/// Asks the driver for a property of a node.
///
/// @param bus     descriptor of the open bus device.
/// @param target  address of a device on the bus, or busNodeTarget.
/// @return the value; noAnswer, after a message, when the driver refused. The caller cannot tell a
///         property of this value from a refusal.
[[nodiscard]] std::uint32_t queryNodeProperty(std::int32_t propertyId, int bus,
                                              std::uint32_t target);

/// Creates an index node and prints its status and bus.
///
/// @param deviceType  device-type code; a code without a name sends an empty name.
/// @param index       the slot's index.
/// @param parentBus   the N of the parent's /dev/i2c-N.
/// @return the new node's bus number; nodeNotCreated, after a message, when the parent could not be
///         opened or the driver refused.
[[nodiscard]] std::uint32_t createIndexNode(std::uint32_t deviceType, std::uint32_t index,
                                            std::int32_t parentBus);

/// Creates a device node on an index node and prints its status and bus.
///
/// @param indexBus  bus number of the index node.
/// @param target    address of the device on the index node.
/// @return the ioctl's result, 0 or more; statusIoFailed, after a message, when the bus could not
///         be opened or the driver refused.
[[nodiscard]] Status createDeviceNode(std::uint32_t deviceType, std::uint32_t index,
                                      std::uint32_t indexBus, std::uint32_t target);

/// Creates an index node, then a device node on it. Creates no device node when the index node
/// failed or @p target is 0; in both cases prints that the index node failed.
void createNodes(std::uint32_t deviceType, std::uint32_t index, std::int32_t parentBus,
                 std::uint32_t target);

/// Option 9: asks for type, index, parent bus and target, then creates the nodes.
/// @return statusDone, even when the driver refused; statusNothingToShow for an invalid input.
Status createDynamicNodes();

/// Option 10: asks for bus and target, then removes the device.
/// @return as createDynamicNodes().
Status deleteDeviceNode();

} // namespace zolt
