// The places of the fields of the riser slot mapping, with their keys in a board description.
//
// The blob has a head of 59 bytes, the records, and a checksum. A record is a head of 20 bytes and
// three lists, each with a count in front: identifiers of downstream links (1 byte each), card
// slots (2 bytes: number, type) and routes of the links (4 bytes each).
#pragma once

#include "board/bit_field.h"

#include <cstddef>

namespace board {

constexpr std::size_t riserMapHeadSize = 59;
constexpr std::size_t descriptionOffset = 2;
constexpr std::size_t descriptionSize = 48;
constexpr std::size_t recordCountOffset = 58;
constexpr std::size_t recordHeadSize = 20;
constexpr std::size_t locationOffset = 2;
constexpr std::size_t partNumberOffset = 10;
constexpr std::size_t recordTextSize = 8;
constexpr std::size_t cardSlotSize = 2;
constexpr std::size_t dslPayloadSize = 4;

constexpr BitField riserMapHeadFields[] = {
    BitField::byte("config_major", 0),      BitField::byte("config_minor", 1),
    BitField::byte("karn_present", 50),     BitField::bigEndian("karn_hwuid", 51),
    BitField::byte("karn_slot_number", 53), BitField::byte("karn_slot_type", 54),
    BitField::byte("ocp_present", 55),      BitField::byte("ocp_slot_number", 56),
    BitField::byte("ocp_slot_type", 57),
};

constexpr BitField recordFields[] = {
    BitField::byte("picpwr", 0),
    BitField::bigEndian("hwuid", 18),
};

constexpr BitField slFields[] = {BitField::byte("sl_index", 1)};
constexpr BitField ocpFields[] = {BitField::byte("ocp_index", 1),
                                  BitField::byte("ocp_lane_index", 2)};
constexpr BitField switchedFields[] = {BitField::byte("switched_riser_index", 1),
                                       BitField::byte("sl_index", 2)};
constexpr FieldsOfType dslPayloadFields[] = {{1, slFields}, {2, ocpFields}, {3, switchedFields}};

} // namespace board
