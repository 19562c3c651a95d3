// The OEM area: descriptors of how a module connects, behind its CIR payload.
//
//   0    length of the area in bytes, this one included
//   1    number of descriptors
//   2    the descriptors, one behind the other: type, length in bytes, and what the type adds
//   last checksum
#pragma once

#include "payload/field.h"

#include <cstdint>
#include <span>

namespace zolt {

/// Cuts the OEM area out of the bytes that were fetched from the start of a module's CIR payload.
/// @return the area, as far as it was fetched; empty when there is none.
[[nodiscard]] std::span<const std::uint8_t> findOemArea(std::span<const std::uint8_t> fetched);

/// Decodes an area that is not empty, with its checksum, which is not verified. The listing ends
/// where the bytes do; the checksum of an area that is cut short is not among them.
/// @param take  is handed the fields in the order in which they print.
void decodeOemArea(std::span<const std::uint8_t> area, TakeField take);

} // namespace zolt
