// The word for a device type, for people and in a board description.
#pragma once

#include "board/document.h"

#include <cstdint>
#include <string>

namespace board {

/// A device type by its name, if no other type has the same name; else by its code.
[[nodiscard]] WrittenValue writtenDeviceType(std::uint8_t code);

/// The same as a text.
[[nodiscard]] std::string deviceTypeWord(std::uint8_t code);

} // namespace board
