// The vocabulary of I2C device types: code, name, label in the menu.
#pragma once

#include <cstdint>
#include <string>

namespace zolt {

constexpr unsigned deviceTypeCount = 165;       ///< codes 0 to 164; a listing takes others as "all"
constexpr unsigned DEVICE_TYPE_NOT_GIVEN = 166; ///< from this code on the operator is asked

/// The name of a device type, as the topology reports and the bus driver use it.
/// @return an empty string for a code that has no name.
[[nodiscard]] std::string deviceTypeName(std::uint32_t code);

/// Prints the menu of device types and its prompt; reads nothing.
void printDeviceTypeMenu();

} // namespace zolt
