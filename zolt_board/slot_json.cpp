#include "board/module_codec.h"
#include "board/slot_registers.h"
#include "zolt_board/board_json.h"
#include "zolt_board/summary.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zolt_board {

namespace {

using board::Bytes;
using board::Slot;

Json endPointsToJson(const board::ModulePayload& payload) {
    Json endPoints = Json::array();
    for (const auto& endPoint : payload.endPoints) {
        const bool isIndirect = board::indirectField.decode(endPoint) != 0;
        Json fields = fieldsToJson(board::endPointFields, endPoint);
        fields.update(fieldsToJson(board::moreEndPointFields(isIndirect), endPoint));
        fields["bytes"] = bytesToJson(endPoint);
        endPoints.push_back(std::move(fields));
    }
    return endPoints;
}

// Null: no module has these bytes.
Json payloadFields(const Bytes& bytes) {
    const auto payload = board::decodePayload(bytes);
    if (!payload) {
        return nullptr;
    }
    Json fields = fieldsToJson(board::headerFields, payload->header);
    fields.update(fieldsToJson(std::array{board::lengthField, board::countField}, bytes));
    fields["checksum"] = bytes.back();
    if (payload->body() == board::PayloadBody::backplane) {
        fields["backplane"] = fieldsToJson(board::backplaneFields, payload->backplane);
    } else if (payload->body() == board::PayloadBody::endPoints) {
        fields["end_points"] = endPointsToJson(*payload);
    }
    return fields;
}

Json descriptorToJson(const board::OemDescriptor& descriptor) {
    Bytes record{descriptor.type, 0};
    record.insert(record.end(), descriptor.data.begin(), descriptor.data.end());
    const auto* const own =
        std::ranges::find(board::oemFields, unsigned{descriptor.type}, &board::FieldsOfType::type);
    Json json{{"type", descriptor.type}};
    if (own != std::end(board::oemFields)) {
        json.update(fieldsToJson(own->fields, record));
    }
    json["size"] = descriptor.statedSize.value_or(static_cast<std::uint8_t>(record.size()));
    json["data"] = bytesToJson(descriptor.data);
    return json;
}

// Null: no area of descriptors has these bytes.
Json oemFieldsOf(const Bytes& bytes) {
    const auto area = board::decodeOemArea(bytes);
    if (!area) {
        return nullptr;
    }
    Json descriptors = Json::array();
    for (const board::OemDescriptor& descriptor : area->descriptors) {
        descriptors.push_back(descriptorToJson(descriptor));
    }
    return {{"oem_area_size", bytes[0]},
            {"oem_descriptors", bytes[1]},
            {"oem_checksum", bytes.back()},
            {"oem", std::move(descriptors)}};
}

// Bytes beside their fields. Null: there are no bytes.
Json decoded(const Bytes& bytes, Json (*fieldsOf)(const Bytes& bytes)) {
    return bytes.empty() ? Json()
                         : Json{{"bytes", bytesToJson(bytes)}, {"fields", fieldsOf(bytes)}};
}

bool readsZero(std::uint8_t id, const board::CpldContents& contents) {
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    const auto registers =
        std::span(contents.raw).subspan(addressOf(board::slotRegisters, id), board::slotBlockSize);
    return std::ranges::all_of(registers, isZero) &&
           std::ranges::all_of(board::slotRegisters.fields, [&](const board::ControlField& field) {
               const Bytes& bytes = contents.named.at(nameOf(board::slotRegisters, id, field));
               return !bytes.empty() && std::ranges::all_of(bytes, isZero);
           });
}

Json slotToJson(const Slot& slot, const board::Board& board, const board::CpldContents& contents) {
    Json registers = registersToJson(board::slotRegisters, slot.id, contents, board);
    const auto ids = std::span(contents.raw)
                         .subspan(addressOf(board::slotRegisters, slot.id) + board::firstDslId,
                                  slot.dslIds.size());
    registers["fields"]["dsl_ids"] = ids;
    Json json{{"id", slot.id}, {"occupied", isOccupied(slot)}, {"registers", std::move(registers)}};
    json["payload"] = decoded(slot.payload, payloadFields);
    json["oem_area"] = decoded(slot.oemArea, oemFieldsOf);
    json["object"] = slot.moduleType.empty()
                         ? Json()
                         : Json{{"type", slot.moduleType}, {"object", slot.objectName}};
    return json;
}

} // namespace

Json slotsToJson(const board::Board& board, const board::CpldContents& contents) {
    std::array<const Slot*, board::slotCount + 1> described{};
    for (const Slot& slot : board.slots) {
        described[slot.id] = &slot;
    }
    Json slots = Json::array();
    for (std::uint8_t id = 1; id <= board::slotCount; ++id) {
        if (described[id] != nullptr) {
            slots.push_back(slotToJson(*described[id], board, contents));
        } else if (!readsZero(id, contents)) {
            slots.push_back(slotToJson({.id = id}, board, contents));
        }
    }
    return slots;
}

} // namespace zolt_board
