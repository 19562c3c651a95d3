// The topology of the running board, from its description and the bus driver's nodes.
#pragma once

#include "standin/board/board.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <cstddef>
#include <string>
#include <vector>

namespace standin {

/// The content of the topology file.
///
/// A described index node stands under its device type; an index node that was created at run time
/// follows there, if its type name is one. Each has its described sub nodes, then the device nodes
/// of its bus. A fault rule takes all data of a device type away.
[[nodiscard]] std::vector<std::byte> topologyOf(const Board& board, const BusCore& core);

/// Puts the content into the place of the file, at once and whole.
/// @throw std::system_error when it cannot be written
void replaceFile(const std::string& path, const std::vector<std::byte>& content);

} // namespace standin
