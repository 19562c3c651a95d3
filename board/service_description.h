// Reads the part of a board description that is about the service.
#pragma once

#include "board/board.h"
#include "board/bus_names.h"
#include "board/toml_table.h"

namespace board {

/// Reads the table [service]. Without it the service publishes the modules, and its information
/// object says that all of them are read.
void readService(TomlTable& root, Board& board);

} // namespace board
