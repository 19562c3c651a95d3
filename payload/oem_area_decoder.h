// The OEM area behind a module's CIR payload describes the module's connections. Its bytes:
//
//   0    length of the area in bytes, this byte included
//   1    number of descriptors
//   2    the descriptors, one behind the other: type, length in bytes, data of the type
//   last checksum
#pragma once

#include "payload/field.h"

#include <cstdint>
#include <span>

namespace zolt {

/// Cuts the OEM area out of the bytes that were fetched from the start of a module's CIR payload.
/// @return the area's fetched bytes; empty when there is no area.
[[nodiscard]] std::span<const std::uint8_t> findOemArea(std::span<const std::uint8_t> fetched);

/// Decodes an area that is not empty, and its checksum. Does not verify the checksum. The listing
/// ends where the bytes end; an area that was not fetched as a whole shows no checksum.
/// @param take  receives the fields in printing order.
void decodeOemArea(std::span<const std::uint8_t> area, TakeField take);

} // namespace zolt
