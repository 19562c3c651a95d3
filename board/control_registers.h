// Encodes the fields of the module classes' control registers as named and raw registers.
#pragma once

#include "board/board.h"
#include "board/toml_table.h"

namespace board {

/// Reads the tables of all module classes, such as `[[cem_riser]]` with `id = 3` and its fields. An
/// instance without a table has registers too; all its fields are 0.
void readControlRegisters(TomlTable& root, Board& board);

} // namespace board
