// Reads a board as a capture would, without a platform.
#pragma once

#include "board/board.h"
#include "capture/observation.h"

namespace capture::test {

/// What a capture reads of the board, with the board's faults and service.
[[nodiscard]] Observation observe(const board::Board& board);

} // namespace capture::test
