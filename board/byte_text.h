// Bytes as text: two-digit hexadecimal numbers, or a hexadecimal dump that the tool printed.
#pragma once

#include "board/bytes.h"

#include <optional>
#include <string_view>

namespace board {

/// Appends the bytes of a text. The header, the addresses and the colons of a dump are skipped.
/// @return the first word that is no byte, or none
[[nodiscard]] std::optional<std::string_view> appendBytes(std::string_view text, Bytes& bytes);

} // namespace board
