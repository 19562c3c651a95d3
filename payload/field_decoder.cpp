#include "payload/field_decoder.h"

namespace zolt {

void FieldDecoder::heading(const Format<>& line) {
    if (!ended_) {
        fields_.push_back(Heading{line});
    }
}

void FieldDecoder::heading(const Format<Number>& line, std::uint8_t unit) {
    if (!ended_) {
        fields_.push_back(Value{line, unit});
    }
}

std::uint16_t FieldDecoder::add(const ValueRow& row, std::size_t start) {
    const std::uint16_t shown = value(row.bits, start);
    if (!ended_) {
        fields_.push_back(Value{row.line, shown});
    }
    return shown;
}

std::uint8_t FieldDecoder::add(const UnitRow& row, std::uint8_t unit, std::size_t start) {
    const auto shown = static_cast<std::uint8_t>(value(row.bits, start));
    if (!ended_) {
        fields_.push_back(UnitValue{row.line, unit, shown});
    }
    return shown;
}

void FieldDecoder::add(const TextRow& row, std::size_t start) {
    const auto text = reader_.text(start + row.offset, row.length);
    ended_ = ended_ || !text;
    if (!ended_) {
        fields_.push_back(TextValue{row.line, *text});
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

std::uint8_t FieldDecoder::byte(std::size_t offset) {
    const auto found = reader_.byte(offset);
    ended_ = ended_ || !found;
    return ended_ ? 0 : *found;
}

std::uint16_t FieldDecoder::value(const Bits& bits, std::size_t start) {
    const unsigned low = byte(start + bits.offset);
    const unsigned upper = bits.upperMask == 0 ? 0 : byte(start + bits.upperOffset);
    const unsigned value = ((low >> bits.shift) & bits.mask) | (upper & bits.upperMask) << 8;
    return ended_ ? 0 : static_cast<std::uint16_t>(value);
}

} // namespace zolt
