// Asks the operator the questions of the node operations.
//
// Each function prints its prompt, reads the answer, and prints a complaint when the answer is not
// a number. At the end of input the answer keeps its initial value. Each operation initialises its
// answers with all bits set, and goes on with this value.
#pragma once

#include <cstdint>
#include <string_view>

namespace zolt {

constexpr std::int32_t nodeNumberNotGiven = -1;
constexpr std::uint32_t targetNotGiven = 0xFFFFFFFF;

/// Asks for a decimal number.
///
/// @param invalid  the complaint about an answer that is not a number.
/// @return false when the answer is not a number.
[[nodiscard]] bool askNumber(std::string_view prompt, std::string_view invalid,
                             std::int32_t& answer);

/// Prints the menu of device types and asks for one. Returns as askNumber() does.
[[nodiscard]] bool askDeviceType(std::int32_t& answer);

/// Asks for a target address, a hexadecimal number. Returns as askNumber() does.
[[nodiscard]] bool askTarget(std::uint32_t& answer);

} // namespace zolt
