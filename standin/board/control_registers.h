// The control registers of the module classes, from their fields to named and raw registers.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

namespace standin {

/// Reads the tables of all module classes: `[[cem_riser]]` with `id = 3` and its fields. Instances
/// that are not described have their registers all the same; every field of them is 0.
void readControlRegisters(TomlTable& root, Board& board);

} // namespace standin
