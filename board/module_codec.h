// Encodes a module as the bytes that it carries, and decodes the bytes.
//
// Decoding is the inverse of encoding: whenever it yields a module, encoding the module yields the
// same bytes again.
#pragma once

#include "board/bytes.h"
#include "board/module_layout.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace board {

/// A CIR payload. The encoder computes length, number of end points and checksum, unless they are
/// stated.
struct ModulePayload {
    std::array<std::uint8_t, payloadHeaderSize> header{};            ///< with headerFields
    std::array<std::uint8_t, backplaneSize> backplane{};             ///< only for class 0x2A
    std::vector<std::array<std::uint8_t, endPointSize>> endPoints{}; ///< not for 0x1A, 0x1B, 0x2A
    std::optional<std::uint8_t> statedSize{};                        ///< in units of 8 bytes
    std::optional<std::uint8_t> statedEndPoints{};                   ///< 0 to 31
    std::optional<std::uint8_t> checksum{};

    [[nodiscard]] PayloadBody body() const { return bodyOf(header[1]); }
};

struct OemDescriptor {
    std::uint8_t type = 0;
    Bytes data{}; ///< the bytes behind type and length
    std::optional<std::uint8_t> statedSize{};

    bool operator==(const OemDescriptor&) const = default;
};

/// An OEM area. The encoder computes length, number of descriptors and checksum, unless they are
/// stated.
struct OemArea {
    std::vector<OemDescriptor> descriptors{};
    std::optional<std::uint8_t> statedSize{};
    std::optional<std::uint8_t> statedDescriptors{};
    std::optional<std::uint8_t> checksum{};
};

[[nodiscard]] Bytes encode(const ModulePayload& payload);
[[nodiscard]] Bytes encode(const OemArea& area);

/// @return none when no module has these bytes: a description has to give them as they are
[[nodiscard]] std::optional<ModulePayload> decodePayload(std::span<const std::uint8_t> bytes);

/// @return none when no area of descriptors has these bytes
[[nodiscard]] std::optional<OemArea> decodeOemArea(std::span<const std::uint8_t> bytes);

} // namespace board
