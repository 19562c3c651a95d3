// Compares the topologies of two boards: index nodes, and the parser's answers.
#pragma once

#include "zolt_board/change.h"

#include "board/i2c_model.h"

#include <vector>

namespace zolt_board {

void compareTopologies(const board::I2cDescription& before, const board::I2cDescription& after,
                       std::vector<Change>& changes);

} // namespace zolt_board
