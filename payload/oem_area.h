// The OEM area behind a module's CIR payload: main menu option 3.
#pragma once

#include "console/status.h"
#include "payload/payload_source.h"

#include <cstdint>

namespace zolt {

/// Fetches a slot's OEM area and shows it.
///
/// @param picpwrId  the slot, 1 to 63; the command line may pass any byte.
/// @param format    a choice of show(), or 0 to let the operator choose.
/// @return statusDone; statusNothingToShow without a module or a readable choice, or when the
///         payload states more than the fetched bytes; statusOutOfMemory; statusRawReadFailed.
///         Each failure is printed, except one: when the HAL reads a register but delivers too few
///         bytes, nothing is printed.
Status showOemArea(std::uint8_t picpwrId, std::uint8_t format);

/// Shows one display of an OEM area.
///
/// @param oemArea        the area's bytes; when empty, a message says that the area is missing.
/// @param payloadOffset  the CIR payload's offset in the payload block, 0 to 65535.
/// @param payloadSize    length of the CIR payload in bytes; the area follows the payload.
/// @param choice         1 raw dump, 2 human readable, 3 nothing.
void printOemArea(const PayloadBuffer& oemArea, std::uint32_t payloadOffset,
                  std::uint32_t payloadSize, std::int8_t choice);

} // namespace zolt
