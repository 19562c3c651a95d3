// The source of the riser slot mapping blob: an area of the HAL, or registers of the CPLD.
#pragma once

#include <cstdint>
#include <string_view>

namespace zolt {

constexpr std::string_view riserMapName = "RISER_SLOT_AMP_BLOB"; ///< the HAL spells it so

constexpr std::uint32_t riserMapRawBytes = 1024;     ///< registers, read one by one
constexpr std::uint16_t riserMapRawAddress = 0x8A00; ///< of the first register

/// The address that the tool passes to the driver: sign-extended to 32 bits.
constexpr std::uint32_t riserMapDriverAddress = 0xFFFF0000U | riserMapRawAddress;

} // namespace zolt
