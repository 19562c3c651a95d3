// Finds the device nodes of the machine's I2C buses.
#pragma once

#include <string>
#include <sys/stat.h>
#include <vector>

namespace standin {

/// Whether a file is the device node of an I2C bus.
[[nodiscard]] bool isBusNode(const struct stat& status);

/// The paths of the nodes of I2C buses that this process can find:
///
///   - below /dev
///   - below other mounts of the file systems that hold device nodes, like a second /dev
///   - a node that is mounted alone, on whatever file
///
/// A node in an ordinary directory elsewhere is not found.
[[nodiscard]] std::vector<std::string> busNodes();

} // namespace standin
