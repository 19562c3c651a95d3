#include "board/riser_map_codec.h"
#include "zolt_board/board_json.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

using board::RiserRecord;

// A text of a fixed length, without the zeros that fill the field up.
Json textField(std::span<const std::uint8_t> record, std::size_t offset, std::size_t size) {
    const auto field = record.subspan(offset, size);
    std::string text(field.begin(), field.end());
    text.resize(text.find_last_not_of('\0') + 1);
    return textToJson(text);
}

Json dslToJson(const board::RiserDsl& dsl) {
    const auto* const own = std::ranges::find(board::dslPayloadFields, unsigned{dsl.route[0]},
                                              &board::FieldsOfType::type);
    Json json{{"id", dsl.id}, {"type", dsl.route[0]}};
    if (own != std::end(board::dslPayloadFields)) {
        json.update(fieldsToJson(own->fields, dsl.route));
    }
    json["bytes"] = bytesToJson(dsl.route);
    return json;
}

Json recordToJson(const RiserRecord& record) {
    const std::span<const std::uint8_t> head = record.head;
    Json json = fieldsToJson(board::recordFields, head);
    json["location"] = textField(head, board::locationOffset, board::recordTextSize);
    json["part_number"] = textField(head, board::partNumberOffset, board::recordTextSize);
    Json slots = Json::array();
    for (std::size_t at = 0; at + 1 < record.cardSlots.size(); at += board::cardSlotSize) {
        slots.push_back({{"number", record.cardSlots[at]}, {"type", record.cardSlots[at + 1]}});
    }
    json["slots"] = std::move(slots);
    Json dsls = Json::array();
    for (const board::RiserDsl& dsl : record.dsls) {
        dsls.push_back(dslToJson(dsl));
    }
    json["dsls"] = std::move(dsls);
    json["dsl_payloads"] =
        record.statedRoutes.value_or(static_cast<std::uint8_t>(record.dsls.size()));
    json["payload_size"] = encode(record)[1];
    return json;
}

// Null: no mapping has these bytes.
Json fieldsOf(const board::Bytes& blob) {
    const auto map = board::decodeRiserMap(blob);
    if (!map) {
        return nullptr;
    }
    const std::span<const std::uint8_t> head = map->head;
    Json json = fieldsToJson(board::riserMapHeadFields, head);
    json["description"] = textField(head, board::descriptionOffset, board::descriptionSize);
    Json records = Json::array();
    for (const RiserRecord& record : map->records) {
        records.push_back(recordToJson(record));
    }
    json["stated_records"] = blob[board::recordCountOffset];
    json["records"] = std::move(records);
    json["checksum"] = encode(*map).back();
    return json;
}

} // namespace

Json riserMapToJson(const board::Bytes& blob) {
    return {{"bytes", bytesToJson(blob)}, {"fields", fieldsOf(blob)}};
}

} // namespace zolt_board
