// Loads a board description: reads TOML into the model of a board.
#pragma once

#include "board/board.h"
#include "board/toml_table.h"

#include <string>
#include <string_view>
#include <vector>

namespace board {

/// Reads a board description. docs/board-description.md describes the keys.
/// @throw BoardError when the file cannot be read, is not TOML, or describes an impossible board
[[nodiscard]] Board loadBoard(const std::string& path);

/// Reads a board description from a text. Messages give @p name as the file.
[[nodiscard]] Board parseBoard(std::string_view description, const std::string& name);

/// Returns the errors of a description, part by part. Of each table there is the first error, and
/// each unknown key if there is no other. An error may be the consequence of another one.
[[nodiscard]] std::vector<std::string> errorsIn(std::string_view description,
                                                const std::string& name);

} // namespace board
