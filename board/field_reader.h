// Reads the fields of a packed record from a table of a board description.
#pragma once

#include "board/bit_field.h"
#include "board/toml_table.h"

#include <cstdint>
#include <span>

namespace board {

/// Puts the fields that the table gives into the record. A field of one bit is a boolean.
void readFields(TomlTable& table, std::span<const BitField> fields, std::span<std::uint8_t> record);

/// Puts the fields of the type into the record. Refuses fields that only other types have.
void readFieldsOfType(TomlTable& table, unsigned type, std::span<const FieldsOfType> layouts,
                      std::span<std::uint8_t> record);

} // namespace board
