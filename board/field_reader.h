// Reads the fields of a packed record from a table of a board description.
#pragma once

#include "board/bit_field.h"
#include "board/toml_table.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace board {

/// Puts the fields that the table gives into the record. A field of one bit is a boolean.
void readFields(TomlTable& table, std::span<const BitField> fields, std::span<std::uint8_t> record);

/// A byte that the table gives; none when it does not.
[[nodiscard]] std::optional<std::uint8_t> givenByte(TomlTable& table, std::string_view key,
                                                    std::int64_t highest = 0xFF);

/// Puts the fields of the type into the record. Refuses fields that only other types have.
void readFieldsOfType(TomlTable& table, unsigned type, std::span<const FieldsOfType> layouts,
                      std::span<std::uint8_t> record);

} // namespace board
