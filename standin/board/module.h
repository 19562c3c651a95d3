// Modules: from their fields, as people think of them, to the bytes that they carry.
//
// CIR payload, by byte:
//   0 format version, 1 device class, 2 its own length in units of 8 bytes, 4..5 device ID and 6..7
//   vendor ID (high byte first), 8 device version, 10 wires, 11 target type and number of end
//   points, 12 target address; then, by class, nothing (0x1A, 0x1B), a backplane descriptor from
//   byte 13 on (0x2A), or end point descriptors of 6 bytes each; the checksum is the last byte.
// OEM area, right behind the payload:
//   0 its own length, 1 number of descriptors, 2.. descriptors, then the checksum.
#pragma once

#include "standin/board/bytes.h"
#include "standin/board/toml_table.h"

#include <cstddef>
#include <cstdint>

namespace standin {

/// Device classes with a layout of their own.
constexpr std::uint8_t puckDeviceClass = 0x1A;
constexpr std::uint8_t rfcDeviceClass = 0x1B;
constexpr std::uint8_t backplaneDeviceClass = 0x2A;

constexpr std::size_t payloadSizeUnit = 8; ///< bytes in which a payload gives its length

/// What a module carries.
struct ModuleBytes {
    Bytes payload;
    Bytes oemArea; ///< empty when the module has none
};

/// Encodes the module that a table describes. A field that is given against the facts (a length, a
/// count, a checksum) stands as it was given.
[[nodiscard]] ModuleBytes readModule(TomlTable& table);

} // namespace standin
