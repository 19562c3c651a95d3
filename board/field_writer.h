// Writes the fields of a packed record into a board description.
#pragma once

#include "board/bit_field.h"
#include "board/document.h"

#include <cstdint>
#include <optional>
#include <span>

namespace board {

/// The fields that are not 0, with their values. A field of one bit is a boolean. Identifiers,
/// classes and addresses are hexadecimal.
[[nodiscard]] WrittenRow fieldsOf(std::span<const BitField> fields,
                                  std::span<const std::uint8_t> record);

/// A number as fieldsOf() writes the field with this key.
[[nodiscard]] WrittenNumber fieldNumber(std::string_view key, std::uint32_t value,
                                        std::uint32_t highest = 0xFF);

/// Adds a byte that a description states in place of the encoder's own.
void addStated(WrittenRow& row, std::string_view key, std::optional<std::uint8_t> stated);

} // namespace board
