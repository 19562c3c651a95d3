#include "board/module.h"

#include "board/field_reader.h"
#include "board/module_codec.h"

#include <optional>

namespace board {

namespace {

void readEndPoints(TomlTable& table, ModulePayload& payload) {
    table.eachTable("end_point", [&](TomlTable& endPoint) {
        std::array<std::uint8_t, endPointSize> descriptor{};
        if (payload.endPoints.size() == mostEndPoints) {
            endPoint.place().refuse("end_point: a module has at most 31 end points");
        }
        readFields(endPoint, endPointFields, descriptor);
        readFields(endPoint, moreEndPointFields(indirectField.decode(descriptor) != 0), descriptor);
        for (const BitField& field : indirectFields) {
            endPoint.onlyWhere(field.key, "'indirect' is true", "indirect");
        }
        for (const BitField& field : directFields) {
            endPoint.onlyWhere(field.key, "'indirect' is not true", "indirect");
        }
        payload.endPoints.push_back(descriptor);
    });
}

void readBackplane(TomlTable& table, ModulePayload& payload) {
    if (auto backplane = table.table("backplane")) {
        readFields(*backplane, backplaneFields, payload.backplane);
        backplane->finish();
    }
}

ModulePayload readPayload(TomlTable& table) {
    ModulePayload payload;
    readFields(table, headerFields, payload.header);
    switch (payload.body()) {
    case PayloadBody::nothing:
        break;
    case PayloadBody::backplane:
        readBackplane(table, payload);
        break;
    case PayloadBody::endPoints:
        readEndPoints(table, payload);
    }
    table.onlyWhere("backplane", "'device_class' is 0x2A", "device_class");
    table.onlyWhere("end_point", "'device_class' is not 0x1A, 0x1B or 0x2A", "device_class");
    payload.statedSize = givenByte(table, lengthField.key);
    payload.statedEndPoints = givenByte(table, countField.key, countField.highest());
    payload.checksum = givenByte(table, "checksum");
    return payload;
}

OemDescriptor readOemDescriptor(TomlTable& table) {
    const auto type = static_cast<std::uint8_t>(table.requiredInteger("type", 0, 0xFF));
    OemDescriptor descriptor{.type = type};
    Bytes record(oemDescriptorSize(type));
    readFieldsOfType(table, type, oemFields, record);
    descriptor.data.assign(record.begin() + oemHeaderSize, record.end());
    if (descriptor.data.empty()) {
        descriptor.data = table.bytes("data").value_or(Bytes{});
    }
    table.onlyWhere("data", "'type' is not 1, 2 or 3", "type");
    descriptor.statedSize = givenByte(table, "size");
    return descriptor;
}

Bytes readOemArea(TomlTable& table) {
    OemArea area;
    table.eachTable("oem", [&](TomlTable& descriptor) {
        area.descriptors.push_back(readOemDescriptor(descriptor));
    });
    area.statedDescriptors = givenByte(table, "oem_descriptors");
    area.statedSize = givenByte(table, "oem_area_size");
    if (area.descriptors.empty() && !area.statedDescriptors && !area.statedSize) {
        table.onlyWhere("oem_checksum", "the module has an OEM area", "oem");
        return {};
    }
    area.checksum = givenByte(table, "oem_checksum");
    Bytes bytes = encode(area);
    if (bytes.size() > longestOemArea) {
        table.place("oem").refuse("module: the OEM area has more than 255 bytes");
    }
    return bytes;
}

} // namespace

ModuleBytes readModule(TomlTable& table) {
    return {.payload = encode(readPayload(table)), .oemArea = readOemArea(table)};
}

} // namespace board
