// The hexadecimal dump of the raw views.
#pragma once

#include <cstdint>
#include <vector>

namespace zolt {

/// Prints a header and sixteen bytes a line, each line behind its address.
///
/// @param baseOffset  address shown for the first byte: at least eight hexadecimal digits.
/// @param bytes       the bytes; the dump starts at the first one.
/// @param byteCount   how many bytes to show, at most bytes.size(): the caller clamps a length that
///                    came from a device before it gets here.
void printHexDump(std::uint64_t baseOffset, const std::vector<std::uint8_t>& bytes,
                  std::uint32_t byteCount);

} // namespace zolt
