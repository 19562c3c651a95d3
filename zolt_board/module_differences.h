// Compares what two modules carry, field by field where their bytes are fields.
#pragma once

#include "zolt_board/change_list.h"

#include <cstdint>
#include <span>

namespace zolt_board {

/// CIR payloads that differ.
void comparePayloads(std::span<const std::uint8_t> before, std::span<const std::uint8_t> after,
                     ChangeList& changes);

/// OEM areas that differ.
void compareOemAreas(std::span<const std::uint8_t> before, std::span<const std::uint8_t> after,
                     ChangeList& changes);

} // namespace zolt_board
