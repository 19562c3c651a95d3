// The service's part of a board description.
#pragma once

#include "standin/board/board.h"
#include "standin/board/toml_table.h"

namespace standin {

constexpr std::string_view servicePathPrefix = "/com/tesk/bmc/zolt/";
constexpr std::string_view serviceInterfacePrefix = "com.tesk.bmc.zolt.";

/// Reads the table [service]. Without one, the service publishes the modules and says that it has
/// read them all.
void readService(TomlTable& root, Board& board);

} // namespace standin
