// Text of a board description in messages: safe for a terminal, and of bounded length.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace board {

/// Writes control characters, characters that change the direction of text, and bytes that are not
/// UTF-8, as escapes such as \n and \x1B. A second pass changes nothing.
[[nodiscard]] std::string printable(std::string_view text);

/// Writes bytes beyond ASCII as escapes, for a terminal without UTF-8.
[[nodiscard]] std::string asciiOnly(std::string_view text);

/// The start of a long text, or the whole of another one; printable.
[[nodiscard]] std::string shortened(std::string_view text);

/// A text in single quotes, shortened.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// Names the right words that are most similar to a wrong one: "; did you mean 'name'?". The text
/// is empty when no word is similar.
[[nodiscard]] std::string suggestion(std::string_view wrong, std::span<const std::string> right);

} // namespace board
