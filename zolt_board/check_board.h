// Checks a board: looks for what is wrong with the data that it shows.
#pragma once

#include "board/board.h"
#include "zolt_board/finding.h"

namespace zolt_board {

/// Returns what is wrong with a board, subject by subject: slots, payloads, OEM areas, the riser
/// slot mapping, registers, I2C nodes, the service. The number of findings is bounded by the size
/// of the description.
///
/// The check judges what readers of the board get. Reads that a fault rule always fails hide what
/// is behind them, and hidden data have no findings.
[[nodiscard]] Findings check(const board::Board& board);

} // namespace zolt_board
