// Fields of a packed record as table rows: the key in a board description, the bits in the record.
#pragma once

#include "board/bytes.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace board {

/// A field of one byte's bits, or of two bytes' bits.
struct BitField {
    std::string_view key;
    std::uint8_t offset;          ///< index of the byte with the low bits
    std::uint8_t high;            ///< highest bit in that byte
    std::uint8_t low;             ///< lowest bit in that byte
    std::uint8_t upperOffset = 0; ///< index of the byte with the higher bits
    std::uint8_t upperBits = 0;   ///< number of bits in that byte, from bit 0 on; 0: none

    static constexpr BitField bits(std::string_view key, std::uint8_t offset, std::uint8_t high,
                                   std::uint8_t low) {
        return {key, offset, high, low};
    }
    static constexpr BitField bit(std::string_view key, std::uint8_t offset, std::uint8_t at) {
        return {key, offset, at, at};
    }
    static constexpr BitField byte(std::string_view key, std::uint8_t offset) {
        return {key, offset, 7, 0};
    }
    static constexpr BitField bigEndian(std::string_view key, std::uint8_t offset) {
        return {key, static_cast<std::uint8_t>(offset + 1), 7, 0, offset, 8};
    }
    static constexpr BitField littleEndian(std::string_view key, std::uint8_t offset,
                                           std::uint8_t upperBits = 8) {
        return {key, offset, 7, 0, static_cast<std::uint8_t>(offset + 1), upperBits};
    }

    [[nodiscard]] constexpr std::uint32_t highest() const {
        return (1U << (high - low + 1 + upperBits)) - 1;
    }

    /// The field's value in the record.
    [[nodiscard]] std::uint32_t decode(std::span<const std::uint8_t> record) const;

    /// The field's value as a named register delivers it: a byte, or two bytes, the low one first.
    [[nodiscard]] Bytes delivered(std::span<const std::uint8_t> record) const;

    /// Puts a value into the record; the bits around the field stay as they are.
    void encode(std::uint32_t value, std::span<std::uint8_t> record) const;
};

/// The fields that a record has for one value of its key 'type'.
struct FieldsOfType {
    unsigned type;
    std::span<const BitField> fields;
};

} // namespace board
