// Where the payload views get their bytes: the slot's registers and the payload block.
//
// The payloads of all slots lie in one block of the CPLD, which the HAL knows as PICPWR_PAYLOADS
// and the CPLD driver at raw address 0x2A01. A slot's payload starts at block index offset + 1,
// raw address 0x2A01 + offset: the same byte.
#pragma once

#include "console/status.h"
#include "cpld/register_access.h"
#include "payload/display_menu.h"

#include <cstdint>

namespace zolt {

/// Bytes of the payload block. The registers that lead to them pass through the same buffer.
using PayloadBuffer = RegisterValue;

/// Address that a dump shows for the first byte of the payload at @p payloadOffset.
constexpr std::uint32_t payloadDumpAddress(std::uint32_t payloadOffset) {
    return cpldWindow + 0x2A01 + payloadOffset;
}

/// Looks whether a module was discovered in the slot, and prints when not.
/// @return statusDone when there is one; statusNothingToShow, which is not printed when the HAL
///         delivered no byte; statusRawReadFailed.
[[nodiscard]] Status requireDiscovered(std::uint8_t picpwrId, PayloadBuffer& buffer);

/// Reads where the slot's payload lies. The register's two bytes stay in the buffer.
/// @return statusDone; statusNothingToShow, which is not printed, when the HAL delivered no 16
///         bits; statusRawReadFailed, which is printed.
[[nodiscard]] Status readPayloadOffset(std::uint8_t picpwrId, PayloadBuffer& buffer,
                                       std::uint16_t& payloadOffset);

/// Fetches @p length bytes from the start of a payload. The HAL's bytes take the place of the
/// buffer's content and may be fewer; a raw read's bytes come in full, behind the two of the
/// offset.
/// @return statusDone; statusOutOfMemory or statusRawReadFailed, which are printed.
[[nodiscard]] Status fetchPayload(std::uint16_t payloadOffset, std::uint32_t length,
                                  PayloadBuffer& buffer);

} // namespace zolt
