// Encodes the fields of a module as the bytes that the module carries.
//
// CIR payload, by byte:
//   0 format version, 1 device class, 2 its own length in units of 8 bytes, 4..5 device ID and 6..7
//   vendor ID (high byte first), 8 device version, 10 wires, 11 target type and number of end
//   points, 12 target address. From byte 13 on, classes 0x1A and 0x1B have nothing, class 0x2A has
//   a backplane descriptor of 7 bytes, and all other classes have end point descriptors of 6 bytes
//   each. The checksum is the last byte.
// OEM area, directly behind the payload:
//   0 its own length, 1 number of descriptors, 2.. descriptors, then the checksum.
#pragma once

#include "board/bytes.h"
#include "board/toml_table.h"

#include <cstddef>
#include <cstdint>

namespace board {

/// Device classes with a layout of their own.
constexpr std::uint8_t puckDeviceClass = 0x1A;
constexpr std::uint8_t rfcDeviceClass = 0x1B;
constexpr std::uint8_t backplaneDeviceClass = 0x2A;

constexpr std::size_t payloadSizeUnit = 8; ///< bytes; a payload gives its length in this unit

/// The bytes that a module carries.
struct ModuleBytes {
    Bytes payload;
    Bytes oemArea; ///< empty when the module has none
};

/// Encodes the module that a table describes. A length, count or checksum that the table gives is
/// used even if it is wrong.
[[nodiscard]] ModuleBytes readModule(TomlTable& table);

} // namespace board
