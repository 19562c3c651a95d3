// Compares two riser slot mappings, record by record where their bytes are records.
#pragma once

#include "zolt_board/change.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zolt_board {

/// @param before  the blob that the first board delivers; may be shorter or longer than the map
void compareRiserMaps(std::span<const std::uint8_t> before, std::span<const std::uint8_t> after,
                      std::vector<Change>& changes);

} // namespace zolt_board
