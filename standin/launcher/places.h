// Finds the stand-in's own files: beside zolt_sim in a build, below the prefix once installed.
#pragma once

#include <string>

namespace standin {

/// The directory of the stand-in's platform libraries.
/// @throw std::runtime_error when the directory does not exist
[[nodiscard]] std::string libraryDirectory();

/// The preload library, which puts the board's I2C buses behind /dev/i2c-N.
/// @throw std::runtime_error when its directory does not exist
[[nodiscard]] std::string preloadLibrary();

} // namespace standin
