// Functions that compose bytes for the payload tests.
#pragma once

#include "tests/support/platform.h"

#include <cstddef>
#include <initializer_list>

namespace zolt::test {

/// Joins all parts in order.
[[nodiscard]] inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// Cuts @p bytes to @p count bytes, or fills them up with zeros.
[[nodiscard]] inline Bytes cut(Bytes bytes, std::size_t count) {
    bytes.resize(count);
    return bytes;
}

/// Lets raw reads from @p address on deliver @p bytes.
inline void placeRaw(std::uint32_t address, const Bytes& bytes) {
    for (const std::uint8_t byte : bytes) {
        platform().raw[address++] = byte;
    }
}

} // namespace zolt::test
