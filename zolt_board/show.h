// The verb "show": what a board description describes.
#pragma once

#include "board/board.h"
#include "zolt_board/json.h"
#include "zolt_board/verb.h"

#include <string>

namespace zolt_board {

extern const Verb showVerb;

/// Writes a summary, and a line for each occupied slot.
void showSummary(const board::Board& board, Output& output);

/// Writes slots, modules, end points, I2C nodes and the service's objects as a tree.
void showTree(const board::Board& board, Output& output);

/// The report in JSON. @param source  how the command line names the board
[[nodiscard]] Json boardToJson(const board::Board& board, const std::string& source);

} // namespace zolt_board
