// Encodes the riser slot mapping as the blob of the CPLD, and decodes the blob.
//
// Decoding is the inverse of encoding: whenever it yields a mapping, encoding the mapping yields
// the same bytes again.
#pragma once

#include "board/bytes.h"
#include "board/riser_map_layout.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace board {

/// A downstream link and its route.
struct RiserDsl {
    std::uint8_t id = 0;
    std::array<std::uint8_t, dslPayloadSize> route{}; ///< the type, then the fields of the type

    bool operator==(const RiserDsl&) const = default;
};

/// One record. The encoder computes length and number of routes, unless they are stated.
struct RiserRecord {
    std::array<std::uint8_t, recordHeadSize> head{}; ///< with recordFields and the two texts
    std::vector<RiserDsl> dsls{};                    ///< at most 255
    Bytes cardSlots{};                               ///< two bytes each, at most 255 slots
    std::optional<std::uint8_t> statedRoutes{};
    std::optional<std::uint8_t> statedSize{};
};

/// The encoder computes the number of records and the checksum, unless they are stated.
struct RiserMap {
    std::array<std::uint8_t, riserMapHeadSize> head{}; ///< with riserMapHeadFields and a text
    std::vector<RiserRecord> records{};
    std::optional<std::uint8_t> statedRecords{};
    std::optional<std::uint8_t> checksum{};
};

[[nodiscard]] Bytes encode(const RiserRecord& record);

/// Encodes the bytes up to the checksum. The blob has zeros behind them, up to riserMapSize.
[[nodiscard]] Bytes encode(const RiserMap& map);

/// Decodes a blob of riserMapSize bytes.
/// @return none when no mapping has these bytes: a description has to give them as they are
[[nodiscard]] std::optional<RiserMap> decodeRiserMap(std::span<const std::uint8_t> blob);

} // namespace board
