// Reads the I2C topology of all device types.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

#include <cstddef>

namespace capture {

/// The nodes and sub nodes that a capture keeps, of one device type and of all types together.
constexpr std::size_t mostNodesOfType = 4096;
constexpr std::size_t mostNodes = 16384;

/// Copies the trees of the sysinfo parser library. A list that goes round in a circle ends before
/// the node that it has already had.
void readTopology(Observation& observation, const Progress& progress);

} // namespace capture
