// The questions of the node operations to the operator.
//
// Each prints its prompt, reads the answer, and prints a complaint when the answer is not a number.
// At the end of input the answer keeps its initial value, all bits set, and goes to the driver so.
#pragma once

#include <cstdint>
#include <string_view>

namespace zolt {

constexpr std::int32_t nodeNumberNotGiven = -1;
constexpr std::uint32_t targetNotGiven = 0xFFFFFFFF;

/// Asks for a decimal number.
///
/// @param invalid  printed when the text at hand is not a number.
/// @return false in that case.
[[nodiscard]] bool askNumber(std::string_view prompt, std::string_view invalid,
                             std::int32_t& answer);

/// Asks for a device type with the menu of device types.
[[nodiscard]] bool askDeviceType(std::int32_t& answer);

/// Asks for a target address, a hexadecimal number.
[[nodiscard]] bool askTarget(std::uint32_t& answer);

} // namespace zolt
