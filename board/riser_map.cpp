#include "board/riser_map.h"

#include "board/bit_field.h"
#include "board/cpld_map.h"

#include <algorithm>
#include <array>
#include <optional>

namespace board {

namespace {

constexpr std::size_t headSize = 59;
constexpr std::size_t descriptionOffset = 2;
constexpr std::size_t descriptionSize = 48;
constexpr std::size_t recordCountOffset = 58;
constexpr std::size_t recordHeadSize = 20;
constexpr std::size_t recordTextSize = 8;
constexpr std::size_t dslPayloadSize = 4;

constexpr BitField headFields[] = {
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

void readText(TomlTable& table, std::string_view key, std::span<std::uint8_t> field) {
    std::ranges::copy(table.text(key, field.size()).value_or(""), field.begin());
}

// Appends the count of items, and the items. The description may give a wrong count instead.
void appendCounted(Bytes& record, const Bytes& items, std::size_t itemSize,
                   std::optional<std::int64_t> givenCount = {}) {
    record.push_back(static_cast<std::uint8_t>(
        givenCount.value_or(static_cast<std::int64_t>(items.size() / itemSize))));
    record.insert(record.end(), items.begin(), items.end());
}

Bytes readSlots(TomlTable& table) {
    Bytes slots = table.bytes("slots").value_or(Bytes{});
    if (slots.size() % 2 != 0) {
        table.place("slots").refuse(
            "record: 'slots' needs two bytes for each slot, number and type");
    }
    if (slots.size() / 2 > 0xFF) {
        table.place("slots").refuse("record: 'slots' has more than 255 slots");
    }
    return slots;
}

struct Dsls {
    Bytes ids;
    Bytes payloads; ///< one for each identifier
};

Dsls readDsls(TomlTable& table) {
    Dsls dsls;
    table.eachTable("dsl", [&](TomlTable& dsl) {
        dsls.ids.push_back(static_cast<std::uint8_t>(dsl.integer("id", 0, 0xFF).value_or(0)));
        std::array<std::uint8_t, dslPayloadSize> payload{};
        const auto type = dsl.requiredInteger("type", 0, 0xFF);
        readFieldsOfType(dsl, static_cast<unsigned>(type), dslPayloadFields, payload);
        payload[0] = static_cast<std::uint8_t>(type);
        dsls.payloads.insert(dsls.payloads.end(), payload.begin(), payload.end());
    });
    return dsls;
}

Bytes readRecord(TomlTable& table) {
    Bytes record(recordHeadSize);
    readFields(table, recordFields, record);
    readText(table, "location", std::span(record).subspan(2, recordTextSize));
    readText(table, "part_number", std::span(record).subspan(10, recordTextSize));
    const Dsls dsls = readDsls(table);
    appendCounted(record, dsls.ids, 1);
    appendCounted(record, readSlots(table), 2);
    appendCounted(record, dsls.payloads, dslPayloadSize, table.integer("dsl_payloads", 0, 0xFF));
    const auto size = table.integer("payload_size", 0, 0xFF);
    if (!size && record.size() > 0xFF) {
        table.place().refuse("record: has more than 255 bytes");
    }
    record[1] = static_cast<std::uint8_t>(size.value_or(static_cast<std::int64_t>(record.size())));
    return record;
}

} // namespace

Bytes readRiserMap(TomlTable& table) {
    if (auto bytes = table.bytes("bytes")) {
        constexpr std::string_view noBytes = "'bytes' is not given";
        for (const BitField& field : headFields) {
            table.onlyWhere(field.key, noBytes);
        }
        for (const char* const key : {"description", "record", "records", "checksum"}) {
            table.onlyWhere(key, noBytes);
        }
        return std::move(*bytes);
    }
    Bytes blob(headSize);
    readFields(table, headFields, blob);
    readText(table, "description", std::span(blob).subspan(descriptionOffset, descriptionSize));
    std::size_t records = 0;
    table.eachTable("record", [&](TomlTable& record) {
        const Bytes bytes = readRecord(record);
        blob.insert(blob.end(), bytes.begin(), bytes.end());
        ++records;
    });
    blob[recordCountOffset] = static_cast<std::uint8_t>(
        table.integer("records", 0, 0xFF).value_or(static_cast<std::int64_t>(records)));
    const auto checksum = table.integer("checksum", 0, 0xFF);
    blob.push_back(checksum ? static_cast<std::uint8_t>(*checksum) : checksumOf(blob));
    if (blob.size() > riserMapSize) {
        table.place().refuse("riser_map: has " + std::to_string(blob.size()) +
                             " bytes, at most 1024 fit");
    }
    blob.resize(riserMapSize);
    return blob;
}

} // namespace board
