// The CIR payload of a slot's module: main menu option 2.
#pragma once

#include "console/status.h"
#include "payload/payload_source.h"

#include <cstdint>

namespace zolt {

/// Fetches a slot's CIR payload and shows it.
///
/// @param picpwrId  the slot, 1 to 63; the command line may pass any byte.
/// @param format    a choice of show(), or 0 to let the operator choose.
/// @return statusDone; statusNothingToShow without a module, a payload, or a readable choice;
///         statusOutOfMemory; statusRawReadFailed. Each failure is printed, except one: when the
///         HAL reads a register but delivers too few bytes, nothing is printed.
Status showCirPayload(std::uint8_t picpwrId, std::uint8_t format);

/// Shows one display of a fetched payload.
///
/// @param payload        the fetched bytes, which may be more or fewer than the payload states.
/// @param payloadOffset  the payload's offset in the payload block, 0 to 65535.
/// @param choice         1 raw dump, 2 human readable, 3 nothing.
void printCirPayload(const PayloadBuffer& payload, std::uint32_t payloadOffset, std::int8_t choice);

} // namespace zolt
