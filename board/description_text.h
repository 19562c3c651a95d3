// The text of a board description: reads it from its file, and checks its bounds.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

namespace board {

// Bounds of all descriptions of a chain together.
constexpr std::size_t longestDescription = 16 * 1024 * 1024; ///< bytes
constexpr std::size_t mostEntries = 262'144;                 ///< keys and tables together

// Bounds of each description.
constexpr std::size_t deepestBrackets = 64; ///< arrays and inline tables
constexpr std::size_t mostKeyParts = 16;    ///< of a dotted key or header

/// Tells files apart, whatever their paths are; none for a text without a file.
using FileIdentity = std::optional<std::pair<dev_t, ino_t>>;

struct DescriptionFile {
    std::string text;
    FileIdentity identity{};
};

/// Reads a file. @throw BoardError when the file cannot be read, is too long or is no regular file
[[nodiscard]] DescriptionFile readDescription(const std::string& path);

/// Reads an open file or pipe to its end. An empty one is refused: the program that should have
/// written the description has failed.
/// @param name  for messages
/// @throw BoardError
[[nodiscard]] DescriptionFile readDescription(int descriptor, const std::string& name);

/// The size of the descriptions of a chain, as far as they are read.
struct DescriptionSize {
    std::size_t bytes = 0;
    std::size_t entries = 0;
};

/// Refuses a text with too many or too deeply nested entries. The TOML parser calls itself for each
/// level of a value, and so does the destructor of its tables.
/// @param name   the file, for messages
/// @param chain  the size of the chain so far; grows by that of the text
/// @throw BoardError
void checkBounds(std::string_view text, const std::string& name, DescriptionSize& chain);

} // namespace board
