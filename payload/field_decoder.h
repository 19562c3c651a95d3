// Decodes bytes by the rows of tables.
//
// The decoder of a layout walks through its rows. Each row names the bytes and bits of a field and
// the line that shows it. The first row whose value is incomplete ends the listing: neither that
// row nor a later one becomes a field. The callers need no check of their own.
#pragma once

#include "payload/byte_reader.h"
#include "payload/field.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zolt {

/// The place of a field's value: bits of one byte and, for a wide field, of a second byte.
struct Bits {
    std::uint8_t offset;          ///< of the byte with the value's low bits
    std::uint8_t shift;           ///< lowest bit of the field in that byte
    std::uint8_t mask;            ///< the field's bits after the shift
    std::uint8_t upperOffset = 0; ///< of the byte with bits 15..8 of the value
    std::uint8_t upperMask = 0;   ///< the field's bits in that byte; 0 without a second byte

    /// The value's low bits in their byte.
    [[nodiscard]] constexpr std::uint8_t low(std::uint8_t byte) const {
        return static_cast<std::uint8_t>((byte >> shift) & mask);
    }

    static constexpr Bits range(std::uint8_t offset, unsigned high, unsigned low) {
        return {offset, static_cast<std::uint8_t>(low),
                static_cast<std::uint8_t>((1U << (high - low + 1)) - 1)};
    }
    static constexpr Bits bit(std::uint8_t offset, unsigned at) { return range(offset, at, at); }
    static constexpr Bits byte(std::uint8_t offset) { return range(offset, 7, 0); }
    /// 16 bits, the high byte first.
    static constexpr Bits bigEndian(std::uint8_t offset) {
        return {static_cast<std::uint8_t>(offset + 1), 0, 0xFF, offset, 0xFF};
    }
    /// 8 bits, and @p upperBits more in the lowest bits of the next byte.
    static constexpr Bits littleEndian(std::uint8_t offset, unsigned upperBits) {
        return {offset, 0, 0xFF, static_cast<std::uint8_t>(offset + 1),
                static_cast<std::uint8_t>((1U << upperBits) - 1)};
    }
};

struct ValueRow {
    Bits bits;
    Line<Number> line;
};

struct UnitRow {
    Bits bits; ///< within one byte
    Line<Number, Number> line;
};

struct TextRow {
    std::uint8_t offset;
    std::uint8_t length; ///< of the field; a NUL may end the text earlier
    Line<Text> line;
};

class FieldDecoder {
public:
    /// @param take  receives every field as soon as it is decoded.
    FieldDecoder(std::span<const std::uint8_t> bytes, TakeField take)
        : reader_(bytes), take_(take) {}

    void heading(Line<> line);
    void heading(Line<Number> line, std::uint8_t unit);

    /// Adds the field of @p row in the layout that starts at byte @p start.
    /// @return the field's value; 0 once the listing has ended.
    std::uint16_t add(const ValueRow& row, std::size_t start = 0);
    std::uint8_t add(const UnitRow& row, std::uint8_t unit, std::size_t start) {
        const auto byte = reader_.byte(start + row.bits.offset);
        if (!byte) {
            return end();
        }
        const std::uint8_t value = row.bits.low(*byte);
        take_(UnitValue{row.line, unit, value});
        return value;
    }
    void add(const TextRow& row, std::size_t start = 0);
    void add(std::span<const ValueRow> rows, std::size_t start = 0);
    void add(std::span<const UnitRow> rows, std::uint8_t unit, std::size_t start);

private:
    std::uint8_t end();

    ByteReader reader_; // empty once the listing has ended
    TakeField take_;
    bool ended_ = false;
};

} // namespace zolt
