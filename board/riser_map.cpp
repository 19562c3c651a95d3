#include "board/riser_map.h"

#include "board/cpld_map.h"
#include "board/field_reader.h"
#include "board/riser_map_codec.h"

#include <algorithm>
#include <optional>

namespace board {

namespace {

void readText(TomlTable& table, std::string_view key, std::span<std::uint8_t> field) {
    std::ranges::copy(table.text(key, field.size()).value_or(""), field.begin());
}

Bytes readCardSlots(TomlTable& table) {
    Bytes slots = table.bytes("slots").value_or(Bytes{});
    if (slots.size() % cardSlotSize != 0) {
        table.place("slots").refuse(
            "record: 'slots' needs two bytes for each slot, number and type");
    }
    if (slots.size() / cardSlotSize > 0xFF) {
        table.place("slots").refuse("record: 'slots' has more than 255 slots");
    }
    return slots;
}

std::vector<RiserDsl> readDsls(TomlTable& table) {
    std::vector<RiserDsl> dsls;
    table.eachTable("dsl", [&](TomlTable& dsl) {
        RiserDsl read{.id = givenByte(dsl, "id").value_or(0)};
        const auto type = dsl.requiredInteger("type", 0, 0xFF);
        readFieldsOfType(dsl, static_cast<unsigned>(type), dslPayloadFields, read.route);
        read.route[0] = static_cast<std::uint8_t>(type);
        dsls.push_back(read);
    });
    return dsls;
}

RiserRecord readRecord(TomlTable& table) {
    RiserRecord record;
    readFields(table, recordFields, record.head);
    readText(table, "location", std::span(record.head).subspan(locationOffset, recordTextSize));
    readText(table, "part_number",
             std::span(record.head).subspan(partNumberOffset, recordTextSize));
    record.dsls = readDsls(table);
    record.cardSlots = readCardSlots(table);
    record.statedRoutes = givenByte(table, "dsl_payloads");
    record.statedSize = givenByte(table, "payload_size");
    if (!record.statedSize && encode(record).size() > 0xFF) {
        table.place().refuse("record: has more than 255 bytes");
    }
    return record;
}

} // namespace

Bytes readRiserMap(TomlTable& table) {
    if (auto bytes = table.bytes("bytes")) {
        constexpr std::string_view noBytes = "'bytes' is not given";
        for (const BitField& field : riserMapHeadFields) {
            table.onlyWhere(field.key, noBytes, "bytes");
        }
        for (const char* const key : {"description", "record", "records", "checksum"}) {
            table.onlyWhere(key, noBytes, "bytes");
        }
        return std::move(*bytes);
    }
    RiserMap map;
    readFields(table, riserMapHeadFields, map.head);
    readText(table, "description", std::span(map.head).subspan(descriptionOffset, descriptionSize));
    table.eachTable("record",
                    [&](TomlTable& record) { map.records.push_back(readRecord(record)); });
    map.statedRecords = givenByte(table, "records");
    map.checksum = givenByte(table, "checksum");
    Bytes blob = encode(map);
    if (blob.size() > riserMapSize) {
        table.place().refuse("riser_map: has " + std::to_string(blob.size()) +
                             " bytes, at most 1024 fit");
    }
    blob.resize(riserMapSize);
    return blob;
}

} // namespace board
