// Properties of the nodes of the platform's I2C bus driver: options 13 and 14.
#pragma once

#include "console/status.h"
#include "i2c/bus_device.h"

#include <cstdint>

namespace zolt {

/// Option 13: asks for bus, property and target, then prints the property's value.
/// @return statusNothingToShow for an invalid input, a bus that cannot be opened, or a property
///         that cannot be read or is 0xFFFFFFFF; each is printed.
Status readNodeProperty();

/// Gives a property a new value.
///
/// @param path        device of the bus, "/dev/i2c-N".
/// @param deviceType  device-type code of the node.
/// @param index       index of the node.
/// @param propertyId  the driver's number for the property.
/// @param target      address of the device on the bus, or 0 for the bus node itself.
/// @return statusNothingToShow when the bus cannot be opened or the driver refuses, which is
///         printed.
Status updateNodeProperty(const BusPath& path, std::uint32_t deviceType, std::uint32_t index,
                          std::int32_t propertyId, std::uint32_t value, std::uint32_t target);

/// Option 14: asks for all that updateNodeProperty() takes, then calls it.
/// @return statusNothingToShow for an invalid input or a failed update; each is printed.
Status promptUpdateNodeProperty();

} // namespace zolt
