// The places of a module's fields in its bytes, with their keys in a board description.
//
// CIR payload, by byte:
//   0 format version, 1 device class, 2 its own length in units of 8 bytes, 4..5 device ID and 6..7
//   vendor ID (high byte first), 8 device version, 10 wires, 11 target type and number of end
//   points, 12 target address. From byte 13 on, classes 0x1A and 0x1B have nothing, class 0x2A has
//   a backplane descriptor of 7 bytes, and all other classes have end point descriptors of 6 bytes
//   each. The checksum is the last byte.
// OEM area, directly behind the payload:
//   0 its own length, 1 number of descriptors, 2.. descriptors, then the checksum. A descriptor
//   starts with its type and its own length.
#pragma once

#include "board/bit_field.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace board {

/// Device classes with a layout of their own.
constexpr std::uint8_t puckDeviceClass = 0x1A;
constexpr std::uint8_t rfcDeviceClass = 0x1B;
constexpr std::uint8_t backplaneDeviceClass = 0x2A;

constexpr std::size_t payloadSizeUnit = 8; ///< bytes; a payload gives its length in this unit
constexpr std::size_t payloadHeaderSize = 13;
constexpr std::size_t backplaneSize = 7;
constexpr std::size_t endPointSize = 6;
constexpr std::size_t mostEndPoints = 31;
constexpr std::size_t oemHeaderSize = 2;
constexpr std::size_t longestOemArea = 255;

constexpr BitField headerFields[] = {
    BitField::byte("format_version", 0),        BitField::byte("device_class", 1),
    BitField::bigEndian("device_id", 4),        BitField::bigEndian("vendor_id", 6),
    BitField::byte("device_version", 8),        BitField::bits("xwires", 10, 7, 4),
    BitField::bits("pwires", 10, 2, 0),         BitField::bits("target_type", 11, 7, 5),
    BitField::bits("target_address", 12, 6, 0),
};

// The encoder fills these fields. A description may give wrong values instead.
constexpr BitField lengthField = BitField::byte("static_payload_size", 2);
constexpr BitField countField = BitField::bits("num_end_points", 11, 4, 0);

constexpr BitField endPointFields[] = {
    BitField::bits("picpwr_index", 0, 7, 4), BitField::bit("i2c_mux_present", 0, 3),
    BitField::bit("indirect", 0, 2),         BitField::bit("hot_plug", 0, 1),
    BitField::bits("type", 1, 7, 5),         BitField::bits("i2c_source", 1, 3, 0),
    BitField::bits("lane_width", 2, 7, 5),   BitField::bits("i2c_mux_channel", 2, 3, 0),
};

constexpr BitField indirectField = endPointFields[2];

constexpr BitField directFields[] = {
    BitField::bit("usb_hub_present", 0, 0),
    BitField::bits("usb_hub_channel", 3, 7, 4),
    BitField::bits("usb_source", 3, 3, 0),
    BitField::bits("dsl_index_lower", 4, 6, 4),
    BitField::bits("dsl_lane_offset_lower", 4, 2, 0),
    BitField::bits("dsl_index_upper", 5, 6, 4),
    BitField::bits("dsl_lane_offset_upper", 5, 2, 0),
};

constexpr BitField indirectFields[] = {
    BitField::bits("pcie_order_lower", 3, 7, 4),
    BitField::bits("pcie_group_lower", 3, 2, 0),
    BitField::bits("pcie_order_upper", 4, 7, 4),
    BitField::bits("pcie_group_upper", 4, 2, 0),
};

constexpr BitField backplaneFields[] = {
    BitField::byte("descriptor_version", 0),
    BitField::byte("bay_id", 1),
    BitField::littleEndian("backplane_id", 2, 2),
    BitField::bits("power_cables", 3, 7, 6),
    BitField::bits("starting_slot_offset", 3, 5, 2),
    BitField::bits("location", 4, 6, 4),
    BitField::bits("last_connector", 4, 3, 0),
    BitField::bits("max_pcie_speed", 5, 7, 6),
    BitField::bits("last_slot", 5, 5, 0),
    BitField::bits("type", 6, 4, 3),
    BitField::bits("last_switch_port", 6, 2, 0),
};

constexpr BitField connectionFields[] = {BitField::byte("src_id", 2), BitField::byte("dst_id", 3)};
constexpr BitField locationFields[] = {BitField::byte("bay_id", 2),
                                       BitField::byte("starting_slot_offset", 3),
                                       BitField::byte("location", 4)};
constexpr BitField presenceFields[] = {BitField::byte("slot_presence", 2)};

constexpr FieldsOfType oemFields[] = {
    {1, connectionFields}, {2, locationFields}, {3, presenceFields}};

/// Length of an OEM descriptor with its type and its length. Types without fields have only these.
constexpr std::size_t oemDescriptorSize(unsigned type) {
    switch (type) {
    case 1:
        return 4;
    case 2:
        return 5;
    case 3:
        return 3;
    default:
        return 2;
    }
}

/// What the body of a payload holds.
enum class PayloadBody : std::uint8_t { nothing, backplane, endPoints };

constexpr PayloadBody bodyOf(std::uint8_t deviceClass) {
    switch (deviceClass) {
    case puckDeviceClass:
    case rfcDeviceClass:
        return PayloadBody::nothing;
    case backplaneDeviceClass:
        return PayloadBody::backplane;
    default:
        return PayloadBody::endPoints;
    }
}

/// The fields that an end point has besides endPointFields.
constexpr std::span<const BitField> moreEndPointFields(bool indirect) {
    return indirect ? std::span<const BitField>(indirectFields) : directFields;
}

} // namespace board
