#include "board/field_reader.h"

#include <algorithm>
#include <string>

namespace board {

std::optional<std::uint8_t> givenByte(TomlTable& table, std::string_view key,
                                      std::int64_t highest) {
    const auto given = table.integer(key, 0, highest);
    return given ? std::optional(static_cast<std::uint8_t>(*given)) : std::nullopt;
}

void readFields(TomlTable& table, std::span<const BitField> fields,
                std::span<std::uint8_t> record) {
    for (const BitField& field : fields) {
        if (field.highest() == 1) {
            if (const auto flag = table.boolean(field.key)) {
                field.encode(*flag ? 1 : 0, record);
            }
        } else if (const auto value = table.integer(field.key, 0, field.highest())) {
            field.encode(static_cast<std::uint32_t>(*value), record);
        }
    }
}

namespace {

// The types that have a field, for a message: "'type' is 1 or 3".
std::string typesWith(std::string_view key, std::span<const FieldsOfType> layouts) {
    std::string types;
    for (const FieldsOfType& layout : layouts) {
        if (std::ranges::find(layout.fields, key, &BitField::key) != layout.fields.end()) {
            types += (types.empty() ? "'type' is " : " or ") + std::to_string(layout.type);
        }
    }
    return types;
}

} // namespace

void readFieldsOfType(TomlTable& table, unsigned type, std::span<const FieldsOfType> layouts,
                      std::span<std::uint8_t> record) {
    const auto own = std::ranges::find(layouts, type, &FieldsOfType::type);
    if (own != layouts.end()) {
        readFields(table, own->fields, record);
    }
    for (const FieldsOfType& layout : layouts) {
        for (const BitField& field : layout.fields) {
            table.onlyWhere(field.key, typesWith(field.key, layouts), "type");
        }
    }
}

} // namespace board
