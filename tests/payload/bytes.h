// Bytes as the payload tests write them.
#pragma once

#include "tests/support/platform.h"

#include <cstddef>
#include <initializer_list>

namespace zolt::test {

/// All parts, one behind the other.
[[nodiscard]] inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// The first @p count bytes; zeros follow where there are fewer.
[[nodiscard]] inline Bytes cut(Bytes bytes, std::size_t count) {
    bytes.resize(count);
    return bytes;
}

/// Makes @p bytes what is read raw from @p address on.
inline void placeRaw(std::uint32_t address, const Bytes& bytes) {
    for (const std::uint8_t byte : bytes) {
        platform().raw[address++] = byte;
    }
}

} // namespace zolt::test
