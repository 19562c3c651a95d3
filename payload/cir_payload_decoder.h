// The CIR payload: what a module says about itself.
//
//   0      payload format version          8   device version
//   1      device class                    10  number of X and P wires
//   2      length, in units of 8 bytes     11  type of the I2C or GPIO target, number of end points
//   4..5   device ID, high byte first      12  address of the target
//   6..7   vendor ID, high byte first      13  end points, or the backplane's description
//
// The checksum is the last byte of the payload's length, except for the two classes of cards that
// end at byte 15.
#pragma once

#include "payload/field.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zolt {

/// The length in bytes that a payload states for itself, 0 to 2040, whatever is there of it; none
/// when not even the length is.
[[nodiscard]] std::optional<std::size_t> statedPayloadSize(std::span<const std::uint8_t> payload);

/// Decodes header, end points or backplane description, and checksum, which is not verified. The
/// listing ends where the bytes do.
/// @param take  is handed the fields in the order in which they print.
void decodeCirPayload(std::span<const std::uint8_t> payload, TakeField take);

} // namespace zolt
