#include "board/module_writer.h"

#include "board/field_writer.h"
#include "board/utf8.h"

#include <algorithm>
#include <string>

namespace board {

namespace {

void writeDescriptor(const OemDescriptor& descriptor, DocumentTable& table) {
    Bytes record{descriptor.type, 0};
    record.insert(record.end(), descriptor.data.begin(), descriptor.data.end());
    table.set("type", WrittenNumber{descriptor.type});
    const auto* const own =
        std::ranges::find(oemFields, unsigned{descriptor.type}, &FieldsOfType::type);
    if (own != std::end(oemFields)) {
        table.set(fieldsOf(own->fields, record));
    } else if (!descriptor.data.empty()) {
        table.set("data", descriptor.data);
    }
    if (descriptor.statedSize) {
        table.set("size", WrittenNumber{*descriptor.statedSize});
    }
}

// The text of a field, without the zeros that fill the field up.
std::string textIn(std::span<const std::uint8_t> field) {
    std::string text(field.begin(), field.end());
    text.resize(text.find_last_not_of('\0') + 1);
    return text;
}

void setText(std::string_view key, std::span<const std::uint8_t> field, DocumentTable& table) {
    if (std::string text = textIn(field); !text.empty()) {
        table.set(key, std::move(text));
    }
}

std::span<const std::uint8_t> descriptionOf(const RiserMap& map) {
    return std::span(map.head).subspan(descriptionOffset, descriptionSize);
}

std::span<const std::uint8_t> locationOf(const RiserRecord& record) {
    return std::span(record.head).subspan(locationOffset, recordTextSize);
}

std::span<const std::uint8_t> partNumberOf(const RiserRecord& record) {
    return std::span(record.head).subspan(partNumberOffset, recordTextSize);
}

bool hasOnlyUtf8(const RiserMap& map) {
    return isUtf8(textIn(descriptionOf(map))) &&
           std::ranges::all_of(map.records, [](const RiserRecord& record) {
               return isUtf8(textIn(locationOf(record))) && isUtf8(textIn(partNumberOf(record)));
           });
}

void writeDsl(const RiserDsl& dsl, DocumentTable& table) {
    table.set("id", fieldNumber("id", dsl.id));
    table.set("type", WrittenNumber{dsl.route[0]});
    const auto* const own =
        std::ranges::find(dslPayloadFields, unsigned{dsl.route[0]}, &FieldsOfType::type);
    if (own != std::end(dslPayloadFields)) {
        table.set(fieldsOf(own->fields, dsl.route));
    }
}

void writeRecord(const RiserRecord& record, DocumentTable& table) {
    table.set("picpwr", WrittenNumber{record.head[0]});
    setText("location", locationOf(record), table);
    setText("part_number", partNumberOf(record), table);
    table.set(fieldsOf(std::span(recordFields).subspan(1), record.head));
    if (!record.cardSlots.empty()) {
        WrittenList slots;
        for (const std::uint8_t byte : record.cardSlots) {
            slots.emplace_back(WrittenNumber{byte});
        }
        table.set("slots", std::move(slots));
    }
    WrittenRow stated;
    addStated(stated, "dsl_payloads", record.statedRoutes);
    addStated(stated, "payload_size", record.statedSize);
    table.set(stated);
    for (const RiserDsl& dsl : record.dsls) {
        writeDsl(dsl, table.append("dsl"));
    }
}

} // namespace

void writeModule(const ModulePayload& payload, const std::optional<OemArea>& area,
                 DocumentTable& table) {
    table.set(fieldsOf(headerFields, payload.header));
    WrittenRow stated;
    addStated(stated, lengthField.key, payload.statedSize);
    addStated(stated, countField.key, payload.statedEndPoints);
    addStated(stated, "checksum", payload.checksum);
    if (area) {
        addStated(stated, "oem_area_size", area->statedSize);
        // An area without descriptors exists only because a key says so.
        addStated(stated, "oem_descriptors",
                  area->descriptors.empty() && !area->statedSize
                      ? area->statedDescriptors.value_or(0)
                      : area->statedDescriptors);
        addStated(stated, "oem_checksum", area->checksum);
    }
    table.set(stated);
    if (auto fields = fieldsOf(backplaneFields, payload.backplane); !fields.empty()) {
        table.table("backplane").set(fields);
    }
    for (const auto& endPoint : payload.endPoints) {
        DocumentTable& written = table.append("end_point");
        written.set(fieldsOf(endPointFields, endPoint));
        written.set(fieldsOf(moreEndPointFields(indirectField.decode(endPoint) != 0), endPoint));
    }
    if (area) {
        for (const OemDescriptor& descriptor : area->descriptors) {
            writeDescriptor(descriptor, table.append("oem"));
        }
    }
}

bool writeRiserMap(const RiserMap& map, DocumentTable& table) {
    if (!hasOnlyUtf8(map)) {
        return false;
    }
    constexpr std::size_t configuration = 2; // rows in front of the description
    table.set(fieldsOf(std::span(riserMapHeadFields).first(configuration), map.head));
    setText("description", descriptionOf(map), table);
    table.set(fieldsOf(std::span(riserMapHeadFields).subspan(configuration), map.head));
    WrittenRow stated;
    addStated(stated, "records", map.statedRecords);
    addStated(stated, "checksum", map.checksum);
    table.set(stated);
    for (const RiserRecord& record : map.records) {
        writeRecord(record, table.append("record"));
    }
    return true;
}

} // namespace board
