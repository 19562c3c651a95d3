// Derives from a board what its service publishes.
#pragma once

#include "board/board.h"
#include "board/module_type.h"
#include "board/service_model.h"

#include <vector>

namespace board {

/// Returns the information object, an object manager for each module type, and an object for each
/// module that has a type. A module's properties come from the bytes of its payload; then the
/// description's changes are applied. Orders come from faults and from the description.
[[nodiscard]] ServiceModel publishBoard(const Board& board);

/// The properties that the service publishes of a slot's module.
/// @param block  the payload block of the board
[[nodiscard]] std::vector<Property> moduleProperties(const ModuleType& type, const Bytes& block,
                                                     const Slot& slot);

} // namespace board
