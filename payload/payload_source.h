// The source of the payload views' bytes: the slot's registers and the payload block.
//
// The payloads of all slots lie in one block of the CPLD. A slot's PAYLOAD_OFFSET register locates
// its payload: at index PAYLOAD_OFFSET + 1 of the HAL's object PICPWR_PAYLOADS, and at raw address
// 0x2A01 + PAYLOAD_OFFSET. Both name the same byte.
#pragma once

#include "console/status.h"
#include "cpld/register_access.h"
#include "payload/display_menu.h"

#include <cstdint>

namespace zolt {

constexpr const char* payloadBlockName = "PICPWR_PAYLOADS"; ///< the HAL's object
constexpr std::uint32_t payloadIndexOfOffset0 = 1;          ///< index of a payload at offset 0
constexpr std::uint32_t payloadRawStart = 0x2A01;           ///< its raw address

/// The bytes that the views fetch of every payload.
constexpr std::uint32_t cirPayloadFetch = 247;
constexpr std::uint32_t oemAreaFetch = 375; ///< the CIR payload and the OEM area behind it

/// Bytes of the payload block. The slot's registers are read into the same buffer first.
using PayloadBuffer = RegisterValue;

/// Address that a dump shows for the first byte of the payload at @p payloadOffset.
constexpr std::uint32_t payloadDumpAddress(std::uint32_t payloadOffset) {
    return cpldWindow + payloadRawStart + payloadOffset;
}

/// Checks that a module was discovered in the slot.
/// @return statusDone when there is one; statusNothingToShow when there is none, or when the HAL
///         delivered no byte; statusRawReadFailed. Each failure but the missing byte is printed.
[[nodiscard]] Status requireDiscovered(std::uint8_t picpwrId, PayloadBuffer& buffer);

/// Reads the offset of the slot's payload. The register's two bytes stay in the buffer.
/// @return statusDone; statusNothingToShow, without a message, when the HAL delivered fewer than
///         two bytes; statusRawReadFailed, after a message.
[[nodiscard]] Status readPayloadOffset(std::uint8_t picpwrId, PayloadBuffer& buffer,
                                       std::uint16_t& payloadOffset);

/// Fetches @p length bytes from the start of a payload. The HAL's bytes replace the buffer's
/// content and may be fewer. A raw read delivers all bytes; the two bytes of the offset precede
/// them.
/// @return statusDone; statusOutOfMemory or statusRawReadFailed, after a message.
[[nodiscard]] Status fetchPayload(std::uint16_t payloadOffset, std::uint32_t length,
                                  PayloadBuffer& buffer);

} // namespace zolt
