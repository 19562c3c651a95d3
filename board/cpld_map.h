// The address map of the stand-in's CPLD.
//
//   0x1000..0x1371  PICPWR register blocks, 14 bytes for each of 63 slots
//   0x13BE..0x2607  control registers of the module classes
//   0x2A00..0x89FF  payload block: index 0 is not used, payload offset 0 lies at 0x2A01
//   0x8A00..0x8DFF  riser slot mapping blob
#pragma once

#include <cstdint>
#include <string_view>

namespace board {

constexpr std::uint32_t rawAddressCount = 0x10000;

constexpr std::uint16_t slotBlockStart = 0x1000;
constexpr std::uint16_t slotBlockSize = 14;

constexpr std::string_view payloadBlockName = "PICPWR_PAYLOADS";
constexpr std::uint32_t payloadBlockStart = 0x2A00;
constexpr std::uint32_t payloadBlockSize = 0x6000;
constexpr std::uint32_t payloadIndexOfOffset0 = 1;
constexpr std::uint32_t payloadsStart = payloadBlockStart + payloadIndexOfOffset0; ///< offset 0
constexpr std::uint32_t payloadRoom = payloadBlockSize - payloadIndexOfOffset0;
constexpr std::uint32_t longestPayload = 247; ///< readers fetch no more of a CIR payload

constexpr std::string_view riserMapName = "RISER_SLOT_AMP_BLOB"; ///< the HAL spells it so
constexpr std::uint32_t riserMapStart = 0x8A00;
constexpr std::uint32_t riserMapSize = 1024;

} // namespace board
