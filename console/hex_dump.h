// The hexadecimal dump of the raw views.
#pragma once

#include <cstdint>
#include <vector>

namespace zolt {

/// Prints a header, then lines of sixteen bytes, each with the address of its first byte.
///
/// @param baseOffset  address of the first byte; printed with at least eight hexadecimal digits.
/// @param bytes       the bytes; the dump starts at the first one.
/// @param byteCount   how many bytes to show; more than bytes.size() shows all bytes.
void printHexDump(std::uint64_t baseOffset, const std::vector<std::uint8_t>& bytes,
                  std::uint32_t byteCount);

} // namespace zolt
