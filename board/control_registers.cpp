#include "board/control_registers.h"

#include "board/described_once.h"
#include "board/field_reader.h"

#include <array>

namespace board {

namespace {

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

constexpr ControlField backplaneFields[] = {
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

constexpr ControlClass classes[] = {
    {"connector_1c", "1C_", 1, 0x13BE, 0, connector1cFields},
    {"connector_4c_plus", "4C+_CONNECTOR_PCARD_", 1, 0x13C4, 0, connector4cPlusFields},
    {"downstream_karn", "DOWNSTREAM_KARN_", 2, 0x13CA, 6, downstreamKarnFields},
    {"downstream_m2_card", "DOWNSTREAM_M.2_CARD_", 2, 0x13DC, 6, downstreamKarnFields},
    {"downstream_tulm", "DOWNSTREAM_TULM_", 2, 0x13EE, 6, downstreamTulmFields},
    {"backplane", "BP_", 8, 0x1400, 9, backplaneFields},
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

using Instance = std::array<std::uint8_t, mostRegisters>;

std::string nameOf(const ControlClass& kind, unsigned instance, const ControlField& field) {
    std::string name(kind.prefix);
    if (kind.instances > 1) {
        name += std::to_string(instance);
    }
    return name.append(field.suffix);
}

void store(const ControlClass& kind, unsigned instance, const Instance& bytes, Board& board) {
    const auto address = static_cast<std::uint16_t>(kind.base + kind.stride * (instance - 1));
    for (const ControlField& field : kind.fields) {
        const auto storeRaw = [&](std::uint8_t offset) {
            board.controlBytes[static_cast<std::uint16_t>(address + offset)] = bytes[offset];
        };
        const std::uint32_t bits = field.bits.decode(bytes);
        Bytes value{static_cast<std::uint8_t>(bits & 0xFF)};
        storeRaw(field.bits.offset);
        if (field.bits.upperBits != 0) {
            value.push_back(static_cast<std::uint8_t>(bits >> 8));
            storeRaw(field.bits.upperOffset);
        }
        if (!field.suffix.empty()) {
            board.controlRegisters.push_back({nameOf(kind, instance, field), std::move(value)});
        }
    }
}

void readFields(TomlTable& table, const ControlClass& kind, Instance& bytes) {
    for (const ControlField& field : kind.fields) {
        readFields(table, {&field.bits, 1}, bytes);
    }
}

void readClass(TomlTable& root, const ControlClass& kind, Board& board) {
    std::vector<Instance> instances(kind.instances);
    DescribedOnce described{std::string(kind.key)};
    root.eachTable(kind.key, [&](TomlTable& table) {
        const auto id = kind.instances == 1 ? table.integer("id", 1, 1).value_or(1)
                                            : table.requiredInteger("id", 1, kind.instances);
        described.note(id, table.place("id"));
        readFields(table, kind, instances[static_cast<std::size_t>(id - 1)]);
    });
    for (unsigned instance = 1; instance <= kind.instances; ++instance) {
        store(kind, instance, instances[instance - 1], board);
    }
}

} // namespace

void readControlRegisters(TomlTable& root, Board& board) {
    for (const ControlClass& kind : classes) {
        readClass(root, kind, board);
    }
}

} // namespace board
