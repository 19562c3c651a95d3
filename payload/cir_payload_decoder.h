// The CIR payload, by which a module identifies itself. Its bytes:
//
//   0      payload format version          8   device version
//   1      device class                    10  number of X and P wires
//   2      length, in units of 8 bytes     11  type of the I2C or GPIO target, number of end points
//   4..5   device ID, high byte first      12  address of the target
//   6..7   vendor ID, high byte first      13  end points, or the backplane's description
//
// The checksum is the last byte of the payload. Device classes 0x1A and 0x1B have it at byte 15.
#pragma once

#include "payload/field.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zolt {

/// The length in bytes that a payload states for itself, 0 to 2040. The bytes at hand may be fewer.
/// None when the byte with the length is missing.
[[nodiscard]] std::optional<std::size_t> statedPayloadSize(std::span<const std::uint8_t> payload);

/// Decodes the header, the end points or the backplane's description, and the checksum. Does not
/// verify the checksum. The listing ends where the bytes end.
/// @param take  receives the fields in printing order.
void decodeCirPayload(std::span<const std::uint8_t> payload, TakeField take);

} // namespace zolt
