// Reads the I2C part of a board description.
#pragma once

#include "board/board.h"
#include "board/toml_table.h"

namespace board {

/// Reads the table [i2c]. Without it the board has no bus, and no device type has data.
void readI2c(TomlTable& root, Board& board);

} // namespace board
