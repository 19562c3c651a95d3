// Device types as a board description writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace board {

/// The code of a device type that is written as its name ("PUCK"), as its label in the menu of the
/// tool ("Backplane" for BP), or as a number from 0 to 164.
/// @return none for any other text
[[nodiscard]] std::optional<std::uint8_t> deviceTypeCode(std::string_view word);

/// Says that a text is no device type, and names similar ones.
[[nodiscard]] std::string noDeviceType(std::string_view word);

} // namespace board
