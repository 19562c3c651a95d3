#include "board/field_writer.h"

#include <algorithm>
#include <array>

namespace board {

namespace {

constexpr std::array<std::string_view, 15> hexadecimalKeys{
    "checksum",       "device_class", "device_id",    "dst_id",         "hwuid",         "id",
    "karn_hwuid",     "module_class", "oem_checksum", "payload_offset", "slot_presence", "src_id",
    "target_address", "vendor_id",    "fill"};

constexpr std::uint32_t firstWithoutModule = 0x80; // PICPWR indices: 0x80 plus the instance

} // namespace

WrittenNumber fieldNumber(std::string_view key, std::uint32_t value, std::uint32_t highest) {
    const bool isIndexWithoutModule = key == "picpwr_index" && value >= firstWithoutModule;
    const bool isHexadecimal =
        isIndexWithoutModule || std::ranges::find(hexadecimalKeys, key) != hexadecimalKeys.end();
    return {value, isHexadecimal ? highest > 0xFF ? 4U : 2U : 0U};
}

WrittenRow fieldsOf(std::span<const BitField> fields, std::span<const std::uint8_t> record) {
    WrittenRow row;
    for (const BitField& field : fields) {
        const std::uint32_t value = field.decode(record);
        if (value == 0) {
            continue;
        }
        if (field.highest() == 1) {
            row.emplace_back(field.key, true);
        } else {
            row.emplace_back(field.key, fieldNumber(field.key, value, field.highest()));
        }
    }
    return row;
}

void addStated(WrittenRow& row, std::string_view key, std::optional<std::uint8_t> stated) {
    if (stated) {
        row.emplace_back(key, fieldNumber(key, *stated));
    }
}

} // namespace board
