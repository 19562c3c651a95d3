// The registers of a slot, laid out as those of a module class are.
//
// A block has 14 bytes: 0 discovery status and flags, 1 module class, 2 its index, 3..4 payload
// offset (low byte first), 6..13 identifiers of the downstream links.
#pragma once

#include "board/control_register_layout.h"
#include "board/cpld_map.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace board {

/// All fields. The eight identifiers of downstream links have no names.
constexpr ControlField slotFields[] = {
    {BitField::bits("dstat", 0, 7, 6), "_DSTAT"},
    {BitField::bit("dbyp", 0, 5), "_DBYP"},
    {BitField::bit("dpen", 0, 4), "_DPEN"},
    {BitField::bit("apen", 0, 3), "_APEN"},
    {BitField::bit("astat", 0, 0), "_ASTAT"},
    {BitField::byte("module_class", 1), "_MOD_CLASS"},
    {BitField::byte("module_class_index", 2), "_MOD_CLASS_IDX"},
    {BitField::littleEndian("payload_offset", 3), "_PAYLOAD_OFFSET"},
    {BitField::byte("dsl1_id", 6), ""},
    {BitField::byte("dsl2_id", 7), ""},
    {BitField::byte("dsl3_id", 8), ""},
    {BitField::byte("dsl4_id", 9), ""},
    {BitField::byte("dsl5_id", 10), ""},
    {BitField::byte("dsl6_id", 11), ""},
    {BitField::byte("dsl7_id", 12), ""},
    {BitField::byte("dsl8_id", 13), ""},
};

/// The field of a key, which must be one of these.
constexpr const ControlField& slotField(std::string_view key) {
    return *std::ranges::find(slotFields, key,
                              [](const ControlField& field) { return field.bits.key; });
}

constexpr std::size_t namedSlotFields = 8; ///< the first ones
constexpr std::size_t firstDslId = 6;      ///< byte of the block

/// The fields that the HAL has names for.
constexpr ControlClass slotRegisters{"slot",        "PICPWR_",
                                     slotCount,     slotBlockStart,
                                     slotBlockSize, std::span(slotFields).first(namedSlotFields)};

} // namespace board
