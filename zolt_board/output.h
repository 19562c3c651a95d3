// What a verb writes. The program prints it when the verb is done.
#pragma once

#include "zolt_board/arguments.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zolt_board {

/// What a part of a text is, for its colour.
enum class Part : std::uint8_t { heading, name, wrong, aside };

struct Output {
    bool colour = false; ///< the text may hold colours
    bool utf8 = false;   ///< the terminal shows UTF-8, box characters included
    std::string text{};

    /// A part of the text, in its colour.
    [[nodiscard]] std::string painted(Part part, std::string_view words) const;

    /// A text of the board, safe for the terminal: control characters and what the terminal's
    /// encoding lacks are escapes. A long text is cut.
    [[nodiscard]] std::string safe(std::string_view words) const;
};

/// Prints the text so far, and empties it. A verb with a long text prints it piece by piece.
/// @throw std::system_error when standard output does not take it
void print(Output& output);

/// The output for standard output, as terminal, locale and environment allow.
[[nodiscard]] Output standardOutput(Colour colour);

} // namespace zolt_board
