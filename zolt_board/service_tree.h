// The service of a board as a tree.
#pragma once

#include "board/board.h"
#include "zolt_board/tree.h"

namespace zolt_board {

/// Adds the objects with their interfaces and the number of their properties, and the orders.
void addService(const board::Board& board, const Output& output, Branch& root);

} // namespace zolt_board
