// The registers of a slot, laid out as those of a module class are.
#pragma once

#include "board/control_register_layout.h"
#include "board/cpld_map.h"

namespace board {

/// The eight identifiers of downstream links have no names.
constexpr ControlField slotFields[] = {
    {BitField::bits("dstat", 0, 7, 6), "_DSTAT"},
    {BitField::bit("dbyp", 0, 5), "_DBYP"},
    {BitField::bit("dpen", 0, 4), "_DPEN"},
    {BitField::bit("apen", 0, 3), "_APEN"},
    {BitField::bit("astat", 0, 0), "_ASTAT"},
    {BitField::byte("module_class", 1), "_MOD_CLASS"},
    {BitField::byte("module_class_index", 2), "_MOD_CLASS_IDX"},
    {BitField::littleEndian("payload_offset", 3), "_PAYLOAD_OFFSET"},
};

constexpr std::size_t firstDslId = 6; ///< in a slot's registers

constexpr ControlClass slotRegisters{"slot",         "PICPWR_",     slotCount,
                                     slotBlockStart, slotBlockSize, slotFields};

} // namespace board
