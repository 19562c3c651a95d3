// The contents of a board's CPLD: derived from the description, then overridden.
#pragma once

#include "board/board.h"
#include "board/cpld_map.h"

#include <map>
#include <string>
#include <vector>

namespace board {

struct CpldContents {
    std::map<std::string, Bytes> named; ///< bytes of each known name
    Bytes raw = Bytes(rawAddressCount); ///< all registers, by raw address
};

/// The payload block as the slots fill it, without overrides.
[[nodiscard]] Bytes payloadBlock(const Board& board);

/// Derives the named registers and the raw bytes from one description of each slot. Overrides come
/// last; each changes only the name or the addresses that it gives.
[[nodiscard]] CpldContents deriveCpldContents(const Board& board);

} // namespace board
