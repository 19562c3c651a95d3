// The control registers of each module class: their places, their names, and their keys in a board
// description.
#pragma once

#include "board/bit_field.h"
#include "board/board.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace board {

struct ControlField {
    BitField bits;           ///< place in the registers of one instance
    std::string_view suffix; ///< end of the register's name; empty: the HAL has no name
};

/// A module class: its key in a description, and the place of its registers.
struct ControlClass {
    std::string_view key;
    std::string_view prefix; ///< start of the names; the number of a numbered instance follows
    unsigned instances;      ///< number of instances; a single one is not numbered
    std::uint16_t base;      ///< raw address of instance 1
    std::uint16_t stride;    ///< from one instance to the next
    std::span<const ControlField> fields;
};

constexpr ControlField connector1cFields[] = {
    {BitField::bit("card_present", 0, 7), "CARD_PRES"},
    {BitField::littleEndian("payload_offset", 1), "CONNECTOR_PCARD_PAYLOAD_OFFSET"},
};

constexpr ControlField connector4cPlusFields[] = {
    {BitField::byte("module_class", 0), "MOD_CLASS"},
    {BitField::littleEndian("payload_offset", 1), "PAYLOAD_OFFSET"},
};

constexpr ControlField downstreamKarnFields[] = {
    {BitField::byte("flop_index", 0), "_FLOP_IDX"},
    {BitField::littleEndian("payload_offset", 1), "_PAYLOAD_OFFSET"},
    {BitField::bit("fru_wp", 3, 0), "_FRU_WP"},
};

constexpr ControlField downstreamTulmFields[] = {
    {BitField::byte("backplane_index", 0), "_BP_IDX"},
    {BitField::littleEndian("payload_offset", 1), "_PAYLOAD_OFFSET"},
    {BitField::bit("fru_wp", 3, 0), "_FRU_WP"},
};

constexpr ControlField backplaneControls[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), ""},
    {BitField::bit("smbus_reset", 0, 3), "_VWIRE_SMBUS_RST"},
    {BitField::bit("bp_reset", 0, 2), ""},
    {BitField::bit("ready", 0, 1), "_VWIRE_RDY"},
    {BitField::bit("downstream_mode", 0, 0), "_VWIRE_DOWNSTREAM_MODE"},
    {BitField::byte("picpwr_index", 1), "_PICPWR_INDEX"},
};

constexpr ControlField cemRiserFields[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), "_PWR_POLICY"},
    {BitField::bit("fru_wp", 0, 1), "_FRU_WP"},
    {BitField::bit("bmc_pwr_en", 0, 0), "_BMC_PWR_EN"},
    {BitField::byte("picpwr_index", 2), "_PICPWR_INDEX"},
};

constexpr ControlField cardFields[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), "_PWR_POLICY"},
    {BitField::bit("fru_wp", 0, 0), "_FRU_WP"},
    {BitField::byte("picpwr_index", 1), "_PICPWR_INDEX"},
};

constexpr ControlField remoteFanFields[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), "PWR_POLICY"},
    {BitField::byte("picpwr_index", 1), "PICPWR_INDEX"},
};

constexpr ControlField flopFields[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), "_PWR_POLICY"},
    {BitField::bit("fru_wp", 0, 4), "_FRU_WP"},
    {BitField::bit("ocp_present", 0, 0), "_OCP_PRES"},
    {BitField::bit("unhide", 1, 7), "_UNHIDE"},
    {BitField::bits("num_links", 1, 5, 4), ""},
    {BitField::bits("card_type", 1, 3, 0), "_PRSNTB"},
    {BitField::byte("picpwr_index", 2), "_PICPWR_INDEX"},
};

constexpr ControlField batteryInterposerFields[] = {
    {BitField::bits("pwr_policy", 0, 7, 6), "_PWR_POLICY"},
    {BitField::bit("bmc_pwr_en", 0, 4), "_BMC_PWR_EN"},
    {BitField::bit("battery_ready", 0, 0), "_BATT_RDY"},
    {BitField::byte("picpwr_index", 1), "_PICPWR_INDEX"},
};

constexpr ControlClass controlClasses[] = {
    {"connector_1c", "1C_", 1, 0x13BE, 0, connector1cFields},
    {"connector_4c_plus", "4C+_CONNECTOR_PCARD_", 1, 0x13C4, 0, connector4cPlusFields},
    {"downstream_karn", "DOWNSTREAM_KARN_", 2, 0x13CA, 6, downstreamKarnFields},
    {"downstream_m2_card", "DOWNSTREAM_M.2_CARD_", 2, 0x13DC, 6, downstreamKarnFields},
    {"downstream_tulm", "DOWNSTREAM_TULM_", 2, 0x13EE, 6, downstreamTulmFields},
    {"backplane", "BP_", 8, 0x1400, 9, backplaneControls},
    {"cem_riser", "CEM_RISER_", 24, 0x1800, 5, cemRiserFields},
    {"karn", "KARN_", 2, 0x1A00, 4, cardFields},
    {"m2_interposer", "M.2_INTERPOSER_", 2, 0x1C00, 4, cardFields},
    {"rida", "RIDA_", 2, 0x1E00, 4, cardFields},
    {"puck", "PUCK_", 16, 0x2000, 4, cardFields},
    {"remote_fan", "REMOTE_FAN_", 1, 0x2200, 0, remoteFanFields},
    {"flop", "FLOP_", 16, 0x2400, 4, flopFields},
    {"battery_interposer", "BAT_INTRPSR_", 2, 0x2600, 4, batteryInterposerFields},
};

constexpr std::size_t mostRegisters = 4; ///< of one instance

/// The registers of one instance.
using ControlInstance = std::array<std::uint8_t, mostRegisters>;

/// Raw address of an instance's first register. Instances count from 1.
[[nodiscard]] constexpr std::uint16_t addressOf(const ControlClass& kind, unsigned instance) {
    return static_cast<std::uint16_t>(kind.base + kind.stride * (instance - 1));
}

/// The HAL's name of a field, if the field has one.
[[nodiscard]] std::string nameOf(const ControlClass& kind, unsigned instance,
                                 const ControlField& field);

/// Puts the registers of an instance into the board: the bytes by address, the fields by name.
void storeInstance(const ControlClass& kind, unsigned instance, const ControlInstance& bytes,
                   Board& board);

} // namespace board
