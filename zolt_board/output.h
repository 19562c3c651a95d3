// What a verb writes. The program prints it when the verb is done.
#pragma once

#include "zolt_board/arguments.h"

#include <string>

namespace zolt_board {

struct Output {
    bool colour = false; ///< the text may hold colours
    bool utf8 = false;   ///< the terminal shows UTF-8, box characters included
    std::string text{};
};

/// The output for standard output, as terminal, locale and environment allow.
[[nodiscard]] Output standardOutput(Colour colour);

} // namespace zolt_board
