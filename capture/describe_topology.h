// Writes the I2C topology and the node properties that were asked for.
#pragma once

#include "board/document.h"
#include "capture/observation.h"

#include <string>
#include <vector>

namespace capture {

void writeI2c(const Observation& observation, board::DocumentTable& root);

/// The fault rules that make the reads of node properties fail as they failed.
[[nodiscard]] std::vector<std::string> propertyFaults(const Observation& observation);

/// One line for each property that could not be read, as --property names it.
[[nodiscard]] std::vector<std::string> propertyFailures(const Observation& observation);

} // namespace capture
