// The control and status registers of every module class, in the order of the report.
//
// A class with several instances has a block of registers for each instance, at equal distances.
// Instances count from 1. A register's address is relative to its block. Its name consists of the
// class's prefix, the instance's number and the register's suffix (CEM_RISER_3_PWR_POLICY). In a
// class with a single unit, each register has its full name in the table.
#pragma once

#include "console/output.h"
#include "cpld/register_access.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

enum class Access : std::uint8_t {
    namedElseRaw,
    rawOnly, ///< the tool reads this register through the CPLD driver alone
};

/// One register and its line of the report.
template <typename Line>
struct Register {
    std::string_view name; ///< full name, or the suffix behind the instance's number
    RawField raw;          ///< relative to the block's base
    Line line;
    Access access = Access::namedElseRaw;
};

using SingleRegister = Register<Line<Number>>;           ///< value
using InstanceRegister = Register<Line<Number, Number>>; ///< number of the instance, value

/// One class of modules: a single unit or several instances, with their registers.
struct ModuleClass {
    std::uint16_t base;           ///< raw address of the first block
    std::uint16_t distance = 0;   ///< from one instance's block to the next
    std::uint8_t instances = 1;   ///< number of blocks
    std::string_view prefix = {}; ///< start of an instance's register names
    std::span<const SingleRegister> registers = {};
    std::span<const InstanceRegister> instanceRegisters = {};
};

constexpr SingleRegister oneCConnector[] = {
    {"1C_CARD_PRES", RawField::bits(0, 7, 7), line<"1C Card Presence                  = %d\n">},
    {"1C_CONNECTOR_PCARD_PAYLOAD_OFFSET", RawField::word(1),
     line<"1C Connector PCARD Payload Offset = %d\n">},
};

constexpr SingleRegister fourCConnector[] = {
    {"4C+_CONNECTOR_PCARD_MOD_CLASS", RawField::byte(0),
     line<"4C+ Connector PCARD Module Class   = 0x%02X\n">},
    {"4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET", RawField::word(1),
     line<"4C+ Connector PCARD Payload Offset = %d\n">},
};

constexpr InstanceRegister karnBehindFlop[] = {
    {"_FLOP_IDX", RawField::byte(0), line<"Downstream KARN%d FLOP Index        = %d\n">},
    {"_PAYLOAD_OFFSET", RawField::word(1), line<"Downstream KARN%d Payload Offset    = %d\n">},
    {"_FRU_WP", RawField::bits(3, 0, 0), line<"Downstream KARN%d FRU Write Protect = %d\n">},
};

constexpr InstanceRegister m2CardBehindFlop[] = {
    {"_FLOP_IDX", RawField::byte(0), line<"Downstream M.2 Card%d FLOP Index        = %d\n">},
    {"_PAYLOAD_OFFSET", RawField::word(1), line<"Downstream M.2 Card%d Payload Offset    = %d\n">},
    {"_FRU_WP", RawField::bits(3, 0, 0), line<"Downstream M.2 Card%d FRU Write Protect = %d\n">},
};

constexpr InstanceRegister tulmBehindBackplane[] = {
    {"_BP_IDX", RawField::byte(0), line<"Downstream TULM%d Backplane Index   = %d\n">},
    {"_PAYLOAD_OFFSET", RawField::word(1), line<"Downstream TULM%d Payload Offset    = %d\n">},
    {"_FRU_WP", RawField::bits(3, 0, 0), line<"Downstream TULM%d FRU Write Protect = %d\n">},
};

constexpr InstanceRegister backplaneModule[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"Backplane %d Power Policy          = %d\n">,
     Access::rawOnly},
    {"_VWIRE_SMBUS_RST", RawField::bits(0, 3, 3),
     line<"Backplane %d SMBus Reset vWire     = %d\n">},
    {"_VWIRE_BP_RST", RawField::bits(0, 2, 2), line<"Backplane %d BP Reset Vwire        = %d\n">,
     Access::rawOnly},
    {"_VWIRE_RDY", RawField::bits(0, 1, 1), line<"Backplane %d ready register vWire  = %d\n">},
    {"_VWIRE_DOWNSTREAM_MODE", RawField::bits(0, 0, 0),
     line<"Backplane %d vWire Downstream Mode = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"Backplane %d PICPWR Index          = %d\n">},
};

constexpr InstanceRegister cemRiser[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"CEM Riser %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 1, 1), line<"CEM Riser %d FRU Write Protect = %d\n">},
    {"_BMC_PWR_EN", RawField::bits(0, 0, 0), line<"CEM Riser %d BMC Power Enable  = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(2), line<"CEM Riser %d PICPWR Index      = %d\n">},
};

constexpr InstanceRegister karn[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"KARN %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 0, 0), line<"KARN %d FRU Write Protect = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"KARN %d PICPWR Index      = %d\n">},
};

constexpr InstanceRegister m2Interposer[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"M.2 Interposer %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 0, 0), line<"M.2 Interposer %d FRU Write Protect = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"M.2 Interposer %d PICPWR Index      = %d\n">},
};

constexpr InstanceRegister rida[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"RIDA %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 0, 0), line<"RIDA %d FRU Write Protect = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"RIDA %d PICPWR Index      = %d\n">},
};

constexpr InstanceRegister puck[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"PUCK %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 0, 0), line<"PUCK %d FRU Write Protect = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"PUCK %d PICPWR Index      = %d\n">},
};

constexpr SingleRegister remoteFanController[] = {
    {"REMOTE_FAN_PWR_POLICY", RawField::bits(0, 7, 6), line<"RFC Power Policy = %d\n">},
    {"REMOTE_FAN_PICPWR_INDEX", RawField::byte(1), line<"RFC PICPWR Index = %d\n">},
};

constexpr InstanceRegister flop[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"FLOP %d Power Policy      = %d\n">},
    {"_FRU_WP", RawField::bits(0, 4, 4), line<"FLOP %d FRU Write Protect = %d\n">},
    {"_OCP_PRES", RawField::bits(0, 0, 0), line<"FLOP %d OCP Presence      = %d\n">},
    {"_UNHIDE", RawField::bits(1, 7, 7), line<"FLOP %d Unhide            = %d\n">},
    {"_NUM_LINKS", RawField::bits(1, 5, 4), line<"FLOP %d Number of links   = %d\n">,
     Access::rawOnly},
    // The presence pins encode the card's type.
    {"_PRSNTB", RawField::bits(1, 3, 0), line<"FLOP %d Card Type         = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(2), line<"FLOP %d PICPWR Index      = %d\n">},
};

constexpr InstanceRegister batteryInterposer[] = {
    {"_PWR_POLICY", RawField::bits(0, 7, 6), line<"Battery Interposer %d Power Policy     = %d\n">},
    {"_BMC_PWR_EN", RawField::bits(0, 4, 4), line<"Battery Interposer %d BMC Power Enable = %d\n">},
    {"_BATT_RDY", RawField::bits(0, 0, 0), line<"Battery Interposer %d Battery Ready    = %d\n">},
    {"_PICPWR_INDEX", RawField::byte(1), line<"Battery Interposer %d PICPWR Index     = %d\n">},
};

constexpr ModuleClass single(std::uint16_t base, std::span<const SingleRegister> registers) {
    return {.base = base, .registers = registers};
}

constexpr ModuleClass repeated(std::uint16_t base, std::uint16_t distance, std::uint8_t instances,
                               std::string_view prefix,
                               std::span<const InstanceRegister> registers) {
    return {.base = base,
            .distance = distance,
            .instances = instances,
            .prefix = prefix,
            .instanceRegisters = registers};
}

/// All classes. A class's selector is its position in this table, counted from 1.
constexpr ModuleClass moduleClasses[] = {
    single(0x13BE, oneCConnector),
    single(0x13C4, fourCConnector),
    repeated(0x13CA, 6, 2, "DOWNSTREAM_KARN_", karnBehindFlop),
    repeated(0x13DC, 6, 2, "DOWNSTREAM_M.2_CARD_", m2CardBehindFlop),
    repeated(0x13EE, 6, 2, "DOWNSTREAM_TULM_", tulmBehindBackplane),
    repeated(0x1400, 9, 8, "BP_", backplaneModule),
    repeated(0x1800, 5, 24, "CEM_RISER_", cemRiser),
    repeated(0x1A00, 4, 2, "KARN_", karn),
    repeated(0x1C00, 4, 2, "M.2_INTERPOSER_", m2Interposer),
    repeated(0x1E00, 4, 2, "RIDA_", rida),
    repeated(0x2000, 4, 16, "PUCK_", puck),
    single(0x2200, remoteFanController),
    repeated(0x2400, 4, 16, "FLOP_", flop),
    repeated(0x2600, 4, 2, "BAT_INTRPSR_", batteryInterposer),
};

} // namespace zolt
