// The I2C device types: code, name, label in the menu.
#pragma once

#include <cstdint>
#include <string>

namespace zolt {

constexpr unsigned deviceTypeCount = 165;       ///< codes 0 to 164; a higher one means all types
constexpr unsigned DEVICE_TYPE_NOT_GIVEN = 166; ///< at this code or above, an option asks

/// The name of a device type, as the topology reports and the bus driver use it.
/// @return an empty string for a code that has no name.
[[nodiscard]] std::string deviceTypeName(std::uint32_t code);

/// Prints the menu of device types and its prompt. Does not read the answer.
void printDeviceTypeMenu();

} // namespace zolt
