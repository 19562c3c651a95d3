// All that a stand-in shows of a board, as lines of text.
#pragma once

#include "board/board.h"

#include <string>
#include <vector>

namespace zolt_board::test {

/// Two boards have the same lines exactly if nobody can tell them apart. The order of the lines is
/// always the same, whatever the order of the description is, where nobody sees that order.
[[nodiscard]] std::vector<std::string> imageOf(const board::Board& board);

} // namespace zolt_board::test
