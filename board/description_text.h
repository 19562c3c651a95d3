// The text of a board description: reads it from its file, and checks its bounds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace board {

constexpr std::size_t longestDescription = 16 * 1024 * 1024; ///< bytes
constexpr std::size_t mostEntries = 262'144;                 ///< keys and tables together
constexpr std::size_t deepestBrackets = 64;                  ///< arrays and inline tables
constexpr std::size_t mostKeyParts = 16;                     ///< of a dotted key or header

/// Reads a file. @throw BoardError when the file cannot be read, is too long or is no regular file
[[nodiscard]] std::string readDescription(const std::string& path);

/// Refuses a text with too many or too deeply nested entries. The TOML parser calls itself for each
/// level of a value, and so does the destructor of its tables.
/// @param name  the file, for messages
/// @throw BoardError
void checkBounds(std::string_view text, const std::string& name);

} // namespace board
