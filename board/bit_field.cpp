#include "board/bit_field.h"

namespace board {

std::uint32_t BitField::decode(std::span<const std::uint8_t> record) const {
    const auto lowerBits = static_cast<unsigned>(high - low + 1);
    const auto get = [&](std::uint8_t at, unsigned shift, unsigned width) {
        return (unsigned{record[at]} >> shift) & ((1U << width) - 1);
    };
    const std::uint32_t lower = get(offset, low, lowerBits);
    return upperBits == 0 ? lower : lower | get(upperOffset, 0, upperBits) << lowerBits;
}

Bytes BitField::delivered(std::span<const std::uint8_t> record) const {
    const std::uint32_t value = decode(record);
    Bytes bytes{static_cast<std::uint8_t>(value & 0xFF)};
    if (upperBits != 0) {
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    }
    return bytes;
}

void BitField::encode(std::uint32_t value, std::span<std::uint8_t> record) const {
    const auto put = [&](std::uint8_t at, unsigned shift, unsigned width, std::uint32_t bits) {
        const auto mask = ((1U << width) - 1) << shift;
        record[at] = static_cast<std::uint8_t>((record[at] & ~mask) | ((bits << shift) & mask));
    };
    const auto lowerBits = static_cast<unsigned>(high - low + 1);
    put(offset, low, lowerBits, value);
    if (upperBits != 0) {
        put(upperOffset, 0, upperBits, value >> lowerBits);
    }
}

} // namespace board
