// The request for a property of a node of the I2C bus driver.
#pragma once

#include <cstdint>

namespace zolt {

/// Asks the driver for a property of a node. Prints nothing.
///
/// @param bus     descriptor of the open bus device.
/// @param target  address of a device on the bus; 0 for the bus itself.
/// @param value   receives the property's value; unchanged when the driver refuses.
/// @return the ioctl's result; negative, with errno set, when the driver refused.
int requestNodeProperty(std::uint32_t propertyId, int bus, std::uint32_t target,
                        std::uint32_t& value);

} // namespace zolt
