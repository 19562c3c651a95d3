// Paths that the variables of the dynamic loader can hold.
#pragma once

#include <string>

namespace standin {

/// The form of @p path that LD_LIBRARY_PATH and LD_PRELOAD can hold. The loader splits their values
/// at spaces, colons and semicolons, and replaces words behind a dollar sign. A path with such a
/// character gets a symbolic link @p link in @p directory.
/// @throw std::runtime_error when the link's path has such a character, too
/// @throw std::system_error when the link cannot be made
[[nodiscard]] std::string loaderPath(const std::string& path, const std::string& directory,
                                     const char* link);

} // namespace standin
