// The CIR payload of a slot's module: main menu option 2.
#pragma once

#include "console/status.h"
#include "payload/payload_source.h"

#include <cstdint>

namespace zolt {

/// Fetches a slot's CIR payload and shows it.
///
/// @param picpwrId  the slot, 1 to 63; from the command line any byte.
/// @param format    0 to let the operator choose, else the display of showByChoice().
/// @return statusDone; statusNothingToShow without a module, a payload, or a readable choice;
///         statusOutOfMemory; statusRawReadFailed. Each of them is printed, except for a register
///         that the HAL reads and delivers without its bytes: that is statusNothingToShow alone.
Status showCirPayload(std::uint8_t picpwrId, std::uint8_t format);

/// Shows one display of a fetched payload.
///
/// @param payload        what was fetched, which may be more or less than the payload says it is.
/// @param payloadOffset  where it lies in the payload block, 0 to 65535.
/// @param choice         1 raw dump, 2 human readable, 3 nothing.
void printCirPayload(const PayloadBuffer& payload, std::uint32_t payloadOffset, std::int8_t choice);

} // namespace zolt
