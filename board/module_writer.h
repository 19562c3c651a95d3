// Writes modules and the riser slot mapping into a board description, field by field.
#pragma once

#include "board/document.h"
#include "board/module_codec.h"
#include "board/riser_map_codec.h"

#include <optional>

namespace board {

/// @param area  none: the module has no OEM area
void writeModule(const ModulePayload& payload, const std::optional<OemArea>& area,
                 DocumentTable& table);

/// @return false, with nothing written, when a text of the mapping is no UTF-8, which a description
///         cannot hold
[[nodiscard]] bool writeRiserMap(const RiserMap& map, DocumentTable& table);

} // namespace board
