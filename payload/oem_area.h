// The OEM area behind a module's CIR payload: main menu option 3.
#pragma once

#include "console/status.h"
#include "payload/payload_source.h"

#include <cstdint>

namespace zolt {

/// Fetches a slot's OEM area and shows it.
///
/// @param picpwrId  the slot, 1 to 63; from the command line any byte.
/// @param format    0 to let the operator choose, else the display of showByChoice().
/// @return statusDone; statusNothingToShow without a module or a readable choice, or when the
///         payload says it is longer than the fetched bytes; statusOutOfMemory;
///         statusRawReadFailed. Each of them is printed, except for a register that the HAL reads
///         and delivers without its bytes: that is statusNothingToShow alone.
Status showOemArea(std::uint8_t picpwrId, std::uint8_t format);

/// Shows one display of an OEM area.
///
/// @param oemArea        the area's bytes; without any, that is all there is to show.
/// @param payloadOffset  where the CIR payload lies in the payload block, 0 to 65535.
/// @param payloadSize    length of the CIR payload in bytes, which lies in front of the area.
/// @param choice         1 raw dump, 2 human readable, 3 nothing.
void printOemArea(const PayloadBuffer& oemArea, std::uint32_t payloadOffset,
                  std::uint32_t payloadSize, std::int8_t choice);

} // namespace zolt
