// Finds what differs between two boards, in the boards' own terms.
#pragma once

#include "zolt_board/change.h"

#include "board/board.h"

#include <vector>

namespace zolt_board {

/// Compares what two boards show, whatever their descriptions look like. Each difference is there
/// once: a field that changes in a name and in the raw register alike is one change. The names of
/// the boards do not count.
/// @return empty exactly if both boards show the same
[[nodiscard]] std::vector<Change> differences(const board::Board& before,
                                              const board::Board& after);

} // namespace zolt_board
