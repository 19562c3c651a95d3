// Reads the part of a board description that is about the service.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

namespace standin {

constexpr std::string_view servicePathPrefix = "/com/tesk/bmc/zolt/";
constexpr std::string_view serviceInterfacePrefix = "com.tesk.bmc.zolt.";

/// Reads the table [service]. Without it the service publishes the modules, and its information
/// object says that all of them are read.
void readService(TomlTable& root, Board& board);

} // namespace standin
