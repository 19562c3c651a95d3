// Builds the topology file of the running board from its description and the driver's nodes.
#pragma once

#include "board/board.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <cstddef>
#include <string>
#include <vector>

namespace standin {

/// The content of the topology file.
///
/// Each device type lists its described index nodes, then the nodes of that type name that were
/// created at run time. A created node is named after its type and index, like "PUCK_3"; its name
/// differs from those of all other nodes. Each index node lists its described sub nodes, then the
/// device nodes of its bus. The faults of the parser stand in the board's image instead.
[[nodiscard]] std::vector<std::byte> topologyOf(const board::Board& board, const BusCore& core);

/// Replaces the file in one step: a reader finds the old content or the new, never a part.
/// @throw std::system_error when it cannot be written
void replaceFile(const std::string& path, const std::vector<std::byte>& content);

} // namespace standin
