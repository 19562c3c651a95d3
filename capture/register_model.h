// Derives slots, control registers, payloads and the riser slot mapping from the reads of a
// capture.
#pragma once

#include "board/board.h"
#include "capture/observation.h"

#include <cstdint>
#include <map>

namespace capture {

/// Bytes of raw registers that were read successfully, one by one, in words or in blocks. The bytes
/// of the HAL's object are those of the payload block's registers.
using RawBytes = std::map<std::uint16_t, std::uint8_t>;

[[nodiscard]] RawBytes knownRegisters(const Observation& observation);

/// Puts into @p board what the reads show: the raw registers first, because they hold whole bytes;
/// named registers where no raw register was read. The board may differ from single reads, where a
/// name and its register disagree, or bytes belong to no payload.
void modelRegisters(const Observation& observation, const RawBytes& known, board::Board& board);

} // namespace capture
