// Finds the boards that come with the tools: beside the programs in a build, below the prefix once
// installed.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace board {

/// The first candidate that is a directory.
/// @param candidates  paths from the directory of the running program
/// @throw std::runtime_error when none is; what() gives the first one
[[nodiscard]] std::filesystem::path nearProgram(std::initializer_list<const char*> candidates);

/// The names of the boards that come with the tools, sorted.
/// @throw std::runtime_error when the directory of boards does not exist
[[nodiscard]] std::vector<std::string> boardNames();

/// The file of a board. @p board is a path when it holds a slash or ends in .toml, else the name of
/// a board that comes with the tools.
/// @throw BoardError when no board has this name; what() gives similar names
/// @throw std::runtime_error when the directory of boards does not exist
[[nodiscard]] std::string boardFile(std::string_view board);

} // namespace board
