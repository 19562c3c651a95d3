// Nodes that the platform's I2C bus driver creates and removes while it runs: options 9 and 10.
//
// An index node is a new bus that stands for one device slot behind a parent bus; a device node is
// a device at a target address on it. All numbers go to the driver as they were given.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

constexpr std::uint32_t busNodeTarget = 0;           ///< the bus node itself, as a target address
constexpr std::uint32_t noAnswer = 0xFFFFFFFF;       ///< a property that could not be queried
constexpr std::uint32_t nodeNotCreated = 0xFFFFFFFF; ///< in place of an index node's bus number

/// Asks the driver for a property of a node.
///
/// @param bus     descriptor of the open bus device.
/// @param target  address of a device on the bus, or busNodeTarget.
/// @return the value; noAnswer when the driver refused, which is printed. A property that has this
///         very value cannot be told from a refusal.
[[nodiscard]] std::uint32_t queryNodeProperty(std::int32_t propertyId, int bus,
                                              std::uint32_t target);

/// Creates an index node and prints its status and bus.
///
/// @param deviceType  device-type code; one without a name sends none.
/// @param index       the slot's index.
/// @param parentBus   the N of the parent's /dev/i2c-N.
/// @return the new node's bus number; nodeNotCreated when the parent could not be opened or the
///         driver refused, which is printed.
[[nodiscard]] std::uint32_t createIndexNode(std::uint32_t deviceType, std::uint32_t index,
                                            std::int32_t parentBus);

/// Creates a device node on an index node and prints its status and bus.
///
/// @param indexBus  bus number of the index node.
/// @param target    address of the device on it.
/// @return the ioctl's result, not negative; statusIoFailed when the bus could not be opened or the
///         driver refused, which is printed.
[[nodiscard]] Status createDeviceNode(std::uint32_t deviceType, std::uint32_t index,
                                      std::uint32_t indexBus, std::uint32_t target);

/// Creates an index node and, when that succeeds and @p target is not 0, a device node on it.
/// Without a target the device is missing, and the operator reads that the index node failed.
void createNodes(std::uint32_t deviceType, std::uint32_t index, std::int32_t parentBus,
                 std::uint32_t target);

/// Option 9: asks for type, index, parent bus and target, then creates the nodes.
/// @return statusDone, whatever the driver said; statusNothingToShow for an invalid input.
Status createDynamicNodes();

/// Option 10: asks for bus and target, then removes the device.
/// @return as createDynamicNodes().
Status deleteDeviceNode();

} // namespace zolt
