// Loads a board description: reads TOML into the model of a board.
#pragma once

#include "board/board.h"
#include "board/description_chain.h"
#include "board/toml_table.h"

#include <string>
#include <string_view>
#include <vector>

namespace board {

/// Reads a board description, and the descriptions that it takes over. docs/board-description.md
/// describes the keys.
/// @param find  finds the file of a board by its name; if empty, there is no such board
/// @throw BoardError when a file cannot be read, is not TOML, or describes an impossible board
[[nodiscard]] Board loadBoard(const std::string& path, const BoardFinder& find = {});

/// Reads a board description from a text. Messages give @p name as the file.
[[nodiscard]] Board parseBoard(std::string_view description, const std::string& name,
                               const BoardFinder& find = {});

/// Tells an observer all keys that a description without errors may have in its tables.
void observeKeys(std::string_view description, const std::string& name, KeyObserver& observer);

/// Returns the errors of a description, part by part. Of each table there is the first error, and
/// each unknown key if there is no other. An error may be the consequence of another one.
[[nodiscard]] Errors errorsIn(std::string_view description, const std::string& name,
                              const BoardFinder& find = {});

/// Returns the errors of a description in a file.
[[nodiscard]] Errors errorsInFile(const std::string& path, const BoardFinder& find = {});

} // namespace board
