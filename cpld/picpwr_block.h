// The PICPWR register block: 14 byte registers for each of the 63 pluggable slots.
//
//   offset 0      status: bits 7..6 DSTAT, 5 DBYP, 4 DPEN, 3 APEN, 0 ASTAT
//   offset 1      module class
//   offset 2      module class index
//   offset 3..4   offset of the module's CIR payload in the payload block, low byte first
//   offset 6..13  DSL1_ID to DSL8_ID
#pragma once

#include "cpld/register_access.h"

#include <cstdint>
#include <string_view>

namespace zolt {

constexpr std::string_view picpwrPrefix = "PICPWR_"; ///< start of the registers' names
constexpr unsigned picpwrCount = 63;
constexpr unsigned picpwrDslCount = 8;

constexpr std::uint16_t picpwrBlockStart = 0x1000;
constexpr std::uint16_t picpwrBlockSize = 14;
constexpr std::uint16_t picpwrDslOffset = 6; ///< DSL1_ID; DSL2_ID to DSL8_ID follow

/// Raw address of the block of PICPWR @p n. Slots count from 1 to 63, but the command line may
/// pass any byte; each yields a 16-bit address.
constexpr std::uint16_t picpwrBlockAddress(std::uint8_t n) {
    return static_cast<std::uint16_t>(picpwrBlockStart + picpwrBlockSize * (n - 1));
}

/// A register of every PICPWR: the suffix of its name and its place in the block.
struct PicpwrRegister {
    std::string_view suffix;
    RawField raw; ///< address relative to the block's start
};

constexpr PicpwrRegister picpwrDstat{"_DSTAT", RawField::bits(0, 7, 6)};
constexpr PicpwrRegister picpwrDbyp{"_DBYP", RawField::bits(0, 5, 5)};
constexpr PicpwrRegister picpwrDpen{"_DPEN", RawField::bits(0, 4, 4)};
constexpr PicpwrRegister picpwrApen{"_APEN", RawField::bits(0, 3, 3)};
constexpr PicpwrRegister picpwrAstat{"_ASTAT", RawField::bits(0, 0, 0)};
constexpr PicpwrRegister picpwrModuleClass{"_MOD_CLASS", RawField::byte(1)};
constexpr PicpwrRegister picpwrModuleClassIndex{"_MOD_CLASS_IDX", RawField::byte(2)};
constexpr PicpwrRegister picpwrPayloadOffset{"_PAYLOAD_OFFSET", RawField::word(3)};

/// The registers of one PICPWR.
class PicpwrBlock {
public:
    /// @param n  1 to 63; the command line may pass any byte.
    explicit PicpwrBlock(std::uint8_t n) : block_(picpwrPrefix, n, picpwrBlockAddress(n)) {}

    /// Reads a register as readField() does: by name, else raw.
    [[nodiscard]] std::int32_t read(const PicpwrRegister& field, RegisterValue& value) {
        return block_.read(field.suffix, field.raw, value);
    }

    /// Reads DSLk_ID raw, because the HAL has no name for it.
    /// @param k  1 to picpwrDslCount.
    [[nodiscard]] std::int32_t readDsl(unsigned k, RegisterValue& value) const {
        return block_.readRaw(RawField::byte(static_cast<std::uint16_t>(picpwrDslOffset + k - 1)),
                              value);
    }

private:
    RegisterBlock block_;
};

} // namespace zolt
