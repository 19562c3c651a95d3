// Finds where single reads differ from the board that was derived from all of them.
#pragma once

#include "board/board.h"
#include "capture/observation.h"
#include "capture/register_model.h"

#include <string>
#include <vector>

namespace capture {

/// Overrides the names and the raw registers whose reads delivered other bytes than the board
/// derives, and describes the HAL's object of the payload block.
void addOverrides(const Observation& observation, const RawBytes& known, board::Board& board);

/// The fault rules that make the reads of registers fail as they failed. One rule covers as many
/// reads as it can without covering one that succeeded.
[[nodiscard]] std::vector<std::string> registerFaults(const Observation& observation);

} // namespace capture
