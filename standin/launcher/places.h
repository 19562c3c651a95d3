// Where the stand-in's own files are: beside zolt_sim in a build, below its prefix once installed.
#pragma once

#include <string>
#include <string_view>

namespace standin {

/// The directory of the stand-in's platform libraries.
/// @throw std::runtime_error when there is none
[[nodiscard]] std::string libraryDirectory();

/// The library that puts the board's I2C buses where a command expects them.
/// @throw std::runtime_error when it is not there
[[nodiscard]] std::string preloadLibrary();

/// The file of a board: @p board itself when it is a path (it holds a slash or ends in .toml),
/// else the board of that name that comes with the tool.
[[nodiscard]] std::string boardFile(std::string_view board);

} // namespace standin
