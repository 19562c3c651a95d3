#include "board/module.h"

#include "board/bit_field.h"
#include "board/module_type.h"

#include <algorithm>
#include <array>

namespace board {

namespace {

constexpr std::size_t headerSize = 13;
constexpr std::size_t mostEndPoints = 31;
constexpr std::size_t backplaneSize = 7;
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
// Lengths of these descriptors, from type 1 on, including type and length.
constexpr std::size_t oemDescriptorSizes[] = {4, 5, 3};

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void readEndPoints(TomlTable& table, Bytes& payload) {
    std::size_t count = 0;
    table.eachTable("end_point", [&](TomlTable& endPoint) {
        std::array<std::uint8_t, endPointSize> descriptor{};
        if (++count > mostEndPoints) {
            endPoint.place().refuse("end_point: a module has at most 31 end points");
        }
        readFields(endPoint, endPointFields, descriptor);
        const bool indirect = endPoint.boolean("indirect").value_or(false);
        readFields(endPoint, indirect ? std::span<const BitField>(indirectFields) : directFields,
                   descriptor);
        for (const BitField& field : indirectFields) {
            endPoint.onlyWhere(field.key, "'indirect' is true");
        }
        for (const BitField& field : directFields) {
            endPoint.onlyWhere(field.key, "'indirect' is not true");
        }
        append(payload, descriptor);
    });
    countField.encode(static_cast<std::uint32_t>(count), payload);
}

void readBackplane(TomlTable& table, Bytes& payload) {
    std::array<std::uint8_t, backplaneSize> descriptor{};
    if (auto backplane = table.table("backplane")) {
        readFields(*backplane, backplaneFields, descriptor);
        backplane->finish();
    }
    append(payload, descriptor);
}

// Ends a record with its checksum. The description may give a wrong checksum instead.
void appendChecksum(TomlTable& table, std::string_view key, Bytes& record) {
    const auto given = table.integer(key, 0, 0xFF);
    record.push_back(given ? static_cast<std::uint8_t>(*given) : checksumOf(record));
}

Bytes readPayload(TomlTable& table) {
    Bytes payload(headerSize);
    readFields(table, headerFields, payload);
    switch (payload[1]) {
    case puckDeviceClass:
    case rfcDeviceClass:
        break;
    case backplaneDeviceClass:
        readBackplane(table, payload);
        break;
    default:
        readEndPoints(table, payload);
    }
    table.onlyWhere("backplane", "'device_class' is 0x2A");
    table.onlyWhere("end_point", "'device_class' is not 0x1A, 0x1B or 0x2A");
    // Fill up to whole units, with the checksum as the last byte.
    const std::size_t units = payload.size() / payloadSizeUnit + 1;
    payload.resize(units * payloadSizeUnit - 1);
    lengthField.encode(static_cast<std::uint32_t>(units), payload);
    readFields(table, {&lengthField, 1}, payload);
    readFields(table, {&countField, 1}, payload);
    appendChecksum(table, "checksum", payload);
    return payload;
}

void readOemDescriptor(TomlTable& table, Bytes& area) {
    const auto type = table.requiredInteger("type", 0, 0xFF);
    const bool hasFields = type >= 1 && type <= std::ssize(oemDescriptorSizes);
    Bytes descriptor(hasFields ? oemDescriptorSizes[type - 1] : 2);
    readFieldsOfType(table, static_cast<unsigned>(type), oemFields, descriptor);
    if (!hasFields) {
        append(descriptor, table.bytes("data").value_or(Bytes{}));
    }
    table.onlyWhere("data", "'type' is not 1, 2 or 3");
    descriptor[0] = static_cast<std::uint8_t>(type);
    descriptor[1] = static_cast<std::uint8_t>(
        table.integer("size", 0, 0xFF)
            .value_or(static_cast<std::int64_t>(std::min<std::size_t>(descriptor.size(), 0xFF))));
    append(area, descriptor);
}

Bytes readOemArea(TomlTable& table) {
    Bytes area(2);
    std::size_t count = 0;
    table.eachTable("oem", [&](TomlTable& descriptor) {
        readOemDescriptor(descriptor, area);
        ++count;
    });
    const auto givenCount = table.integer("oem_descriptors", 0, 0xFF);
    const auto givenSize = table.integer("oem_area_size", 0, 0xFF);
    if (count == 0 && !givenCount && !givenSize) {
        table.onlyWhere("oem_checksum", "the module has an OEM area");
        return {};
    }
    if (area.size() + 1 > longestOemArea) {
        table.place("oem").refuse("module: the OEM area has more than 255 bytes");
    }
    area[0] =
        static_cast<std::uint8_t>(givenSize.value_or(static_cast<std::int64_t>(area.size() + 1)));
    area[1] = static_cast<std::uint8_t>(givenCount.value_or(static_cast<std::int64_t>(count)));
    appendChecksum(table, "oem_checksum", area);
    return area;
}

} // namespace

ModuleBytes readModule(TomlTable& table) {
    return {.payload = readPayload(table), .oemArea = readOemArea(table)};
}

} // namespace board
