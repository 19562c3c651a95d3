// The bytes of registers, payloads and blobs.
#pragma once

#include <cstdint>
#include <vector>

namespace board {

using Bytes = std::vector<std::uint8_t>;

/// The byte that makes the sum of a record and itself 0, modulo 256.
[[nodiscard]] constexpr std::uint8_t checksumOf(const Bytes& record) {
    unsigned sum = 0;
    for (const std::uint8_t byte : record) {
        sum += byte;
    }
    return static_cast<std::uint8_t>(0U - sum);
}

} // namespace board
