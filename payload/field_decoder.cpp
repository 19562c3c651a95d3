#include "payload/field_decoder.h"

namespace zolt {

void FieldDecoder::heading(Line<> line) {
    if (!ended_) {
        take_(Heading{line});
    }
}

void FieldDecoder::heading(Line<Number> line, std::uint8_t unit) {
    if (!ended_) {
        take_(Value{line, unit});
    }
}

std::uint16_t FieldDecoder::add(const ValueRow& row, std::size_t start) {
    const auto low = reader_.byte(start + row.bits.offset);
    if (!low) {
        return end();
    }
    std::uint16_t value = row.bits.low(*low);
    if (row.bits.upperMask != 0) {
        const auto upper = reader_.byte(start + row.bits.upperOffset);
        if (!upper) {
            return end();
        }
        value = static_cast<std::uint16_t>(value | (*upper & row.bits.upperMask) << 8);
    }
    take_(Value{row.line, value});
    return value;
}

void FieldDecoder::add(const TextRow& row, std::size_t start) {
    if (const auto text = reader_.text(start + row.offset, row.length)) {
        take_(TextValue{row.line, *text});
    } else {
        end();
    }
}

void FieldDecoder::add(std::span<const ValueRow> rows, std::size_t start) {
    for (const ValueRow& row : rows) {
        add(row, start);
    }
}

void FieldDecoder::add(std::span<const UnitRow> rows, std::uint8_t unit, std::size_t start) {
    for (const UnitRow& row : rows) {
        add(row, unit, start);
    }
}

std::uint8_t FieldDecoder::end() {
    reader_ = ByteReader({});
    ended_ = true;
    return 0;
}

} // namespace zolt
