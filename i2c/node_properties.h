// Reads and updates properties of the I2C bus driver's nodes: options 13 and 14.
#pragma once

#include "console/status.h"
#include "i2c/bus_device.h"

#include <cstdint>

namespace zolt {

/// Option 13: asks for bus, property and target, then prints the property's value.
/// @return statusDone; statusNothingToShow, after a message, for an invalid input, a bus that
///         cannot be opened, or a property that cannot be read or has the value 0xFFFFFFFF.
Status readNodeProperty();

/// Gives a property a new value.
///
/// @param path        the bus device, "/dev/i2c-N".
/// @param deviceType  device-type code of the node.
/// @param index       index of the node.
/// @param propertyId  the driver's number for the property.
/// @param target      address of the device on the bus, or 0 for the bus node itself.
/// @return statusDone; statusNothingToShow, after a message, when the bus cannot be opened or the
///         driver refuses.
Status updateNodeProperty(const BusPath& path, std::uint32_t deviceType, std::uint32_t index,
                          std::int32_t propertyId, std::uint32_t value, std::uint32_t target);

/// Option 14: asks for the arguments of updateNodeProperty(), then calls it.
/// @return statusDone; statusNothingToShow, after a message, for an invalid input or a failed
///         update.
Status promptUpdateNodeProperty();

} // namespace zolt
