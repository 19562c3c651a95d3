// Numbers as a board description writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace board {

/// A whole number in decimal or, behind 0x, in hexadecimal, with or without a minus sign.
/// @return none when the text is anything else, or the number is outside the limits
[[nodiscard]] std::optional<std::int64_t> numberIn(std::string_view text, std::int64_t lowest,
                                                   std::int64_t highest);

/// A raw address as messages show it: "0x1000".
[[nodiscard]] std::string addressText(std::int64_t address);

} // namespace board
