// Derives from a board what its service publishes.
#pragma once

#include "board/board.h"
#include "board/module_type.h"
#include "board/service_model.h"

#include <cstddef>
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

/// The number of a module's own properties that an object shows with the same type and value.
[[nodiscard]] std::size_t sharedProperties(const std::vector<Property>& own,
                                           const std::vector<Property>& shown);

/// Whether an object that shows so many of a module's own properties shows that module. Zeros are
/// shared by modules that have nothing else in common, so it takes most of the properties.
[[nodiscard]] constexpr bool isMost(std::size_t shared, const std::vector<Property>& own) {
    return 2 * shared > own.size();
}

} // namespace board
