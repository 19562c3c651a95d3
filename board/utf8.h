// Characters of texts in UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace board {

struct Character {
    char32_t point = 0;
    std::size_t length = 0; ///< in bytes; 0: the text does not start with a character
};

/// The character with which a text starts, in its shortest form.
[[nodiscard]] Character firstCharacter(std::string_view text);

/// Whether a text is valid UTF-8, so that it can stand in TOML.
[[nodiscard]] bool isUtf8(std::string_view text);

} // namespace board
