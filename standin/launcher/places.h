// Finds the stand-in's own files: beside zolt_sim in a build, below the prefix once installed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// The directory of the stand-in's platform libraries.
/// @throw std::runtime_error when the directory does not exist
[[nodiscard]] std::string libraryDirectory();

/// The preload library, which puts the board's I2C buses behind /dev/i2c-N.
/// @throw std::runtime_error when its directory does not exist
[[nodiscard]] std::string preloadLibrary();

/// The names of the boards that come with the tool, sorted.
/// @throw std::runtime_error when the directory of boards does not exist
[[nodiscard]] std::vector<std::string> boardNames();

/// The file of a board. @p board is a path when it holds a slash or ends in .toml, else the name of
/// a board that comes with the tool.
/// @throw board::BoardError when no board has this name; what() gives similar names
/// @throw std::runtime_error when the directory of boards does not exist
[[nodiscard]] std::string boardFile(std::string_view board);

} // namespace standin
