// The places of the riser slot mapping blob's parts. riser_slot_map_decoder.h shows the layout.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zolt::riser_map {

// Offsets in the blob.
constexpr std::uint8_t descriptionOffset = 2;
constexpr std::uint8_t descriptionLength = 48;
constexpr std::uint8_t recordCount = 58;
constexpr std::size_t firstRecord = 59;

// Offsets in a record.
constexpr std::uint8_t recordSize = 1;
constexpr std::uint8_t locationOffset = 2;
constexpr std::uint8_t locationLength = 8;
constexpr std::uint8_t partNumberOffset = 10;
constexpr std::uint8_t partNumberLength = 8;
constexpr std::uint8_t dslCount = 20;
constexpr std::size_t firstDsl = 21;

constexpr std::size_t slotSize = 2;
constexpr std::size_t dslPayloadSize = 4;

} // namespace zolt::riser_map
