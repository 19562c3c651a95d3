// Reads all that a capture keeps of the board.
#pragma once

#include "capture/node_properties.h"
#include "capture/observation.h"
#include "capture/progress.h"

#include <span>

namespace capture {

/// Reads what the reports of zolt_test read, and the properties of nodes that the caller names.
/// Writes nothing to the hardware. @throw std::exception that a platform's library throws
[[nodiscard]] Observation readBoard(std::span<const NodeProperty> properties,
                                    const Progress& progress);

} // namespace capture
