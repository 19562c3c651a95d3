// Encodes the fields of the module classes' control registers as named and raw registers.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

namespace standin {

/// Reads the tables of all module classes, such as `[[cem_riser]]` with `id = 3` and its fields. An
/// instance without a table has registers too; all its fields are 0.
void readControlRegisters(TomlTable& root, Board& board);

} // namespace standin
