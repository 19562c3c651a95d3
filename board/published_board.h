// Derives from a board what its service publishes.
#pragma once

#include "board/board.h"
#include "board/service_model.h"

namespace board {

/// Returns the information object, an object manager for each module type, and an object for each
/// module that has a type. A module's properties come from the bytes of its payload; then the
/// description's changes are applied. Orders come from faults and from the description.
[[nodiscard]] ServiceModel publishBoard(const Board& board);

} // namespace board
