// What the CPLD of a board holds: derived from its description, then overridden.
#pragma once

#include "standin/board/board.h"
#include "standin/board/cpld_map.h"

#include <map>
#include <string>
#include <vector>

namespace standin {

struct CpldContents {
    std::map<std::string, Bytes> named; ///< what each known name delivers
    Bytes raw = Bytes(rawAddressCount); ///< every register, by raw address
};

/// The payload block as the modules fill it, before anything is overridden.
[[nodiscard]] Bytes payloadBlock(const Board& board);

/// One description of a slot yields both its named registers and its raw bytes; overrides come
/// last and touch only what they name.
[[nodiscard]] CpldContents deriveCpldContents(const Board& board);

} // namespace standin
