#include "board/control_registers.h"

#include "board/board_loader.h"
#include "board/cpld_contents.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

CpldContents contentsOf(const std::string& description) {
    return deriveCpldContents(test::boardOf(description, "b.toml"));
}

struct Described {
    const char* description; ///< an instance with all its fields
    std::map<std::string, Bytes> named;
    std::map<std::uint16_t, std::uint8_t> raw;
};

// The last instance of every class, which shows base and distance of the class, and a few others.
const Described classes[] = {
    {"[[connector_1c]]\ncard_present = true\npayload_offset = 0x1234",
     {{"1C_CARD_PRES", {1}}, {"1C_CONNECTOR_PCARD_PAYLOAD_OFFSET", {0x34, 0x12}}},
     {{0x13BE, 0x80}, {0x13BF, 0x34}, {0x13C0, 0x12}}},
    {"[[connector_4c_plus]]\nid = 1\nmodule_class = 0xC4\npayload_offset = 0x5678",
     {{"4C+_CONNECTOR_PCARD_MOD_CLASS", {0xC4}},
      {"4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET", {0x78, 0x56}}},
     {{0x13C4, 0xC4}, {0x13C5, 0x78}, {0x13C6, 0x56}}},
    {"[[downstream_karn]]\nid = 2\nflop_index = 0xF1\npayload_offset = 0x0102\nfru_wp = true",
     {{"DOWNSTREAM_KARN_2_FLOP_IDX", {0xF1}},
      {"DOWNSTREAM_KARN_2_PAYLOAD_OFFSET", {0x02, 0x01}},
      {"DOWNSTREAM_KARN_2_FRU_WP", {1}}},
     {{0x13D0, 0xF1}, {0x13D1, 0x02}, {0x13D2, 0x01}, {0x13D3, 0x01}}},
    {"[[downstream_m2_card]]\nid = 2\nflop_index = 0xF2\npayload_offset = 0x0304\nfru_wp = true",
     {{"DOWNSTREAM_M.2_CARD_2_FLOP_IDX", {0xF2}},
      {"DOWNSTREAM_M.2_CARD_2_PAYLOAD_OFFSET", {0x04, 0x03}},
      {"DOWNSTREAM_M.2_CARD_2_FRU_WP", {1}}},
     {{0x13E2, 0xF2}, {0x13E3, 0x04}, {0x13E4, 0x03}, {0x13E5, 0x01}}},
    {"[[downstream_tulm]]\nid = 2\nbackplane_index = 0xB2\npayload_offset = 0x0506\nfru_wp = true",
     {{"DOWNSTREAM_TULM_2_BP_IDX", {0xB2}},
      {"DOWNSTREAM_TULM_2_PAYLOAD_OFFSET", {0x06, 0x05}},
      {"DOWNSTREAM_TULM_2_FRU_WP", {1}}},
     {{0x13F4, 0xB2}, {0x13F5, 0x06}, {0x13F6, 0x05}, {0x13F7, 0x01}}},
    {"[[backplane]]\nid = 8\npwr_policy = 2\nsmbus_reset = true\nbp_reset = false\nready = true\n"
     "downstream_mode = false\npicpwr_index = 0x3F",
     {{"BP_8_VWIRE_SMBUS_RST", {1}},
      {"BP_8_VWIRE_RDY", {1}},
      {"BP_8_VWIRE_DOWNSTREAM_MODE", {0}},
      {"BP_8_PICPWR_INDEX", {0x3F}}},
     {{0x143F, 0x8A}, {0x1440, 0x3F}}},
    {"[[backplane]]\nid = 1\npwr_policy = 1\nbp_reset = true\ndownstream_mode = true",
     {{"BP_1_VWIRE_SMBUS_RST", {0}},
      {"BP_1_VWIRE_RDY", {0}},
      {"BP_1_VWIRE_DOWNSTREAM_MODE", {1}},
      {"BP_1_PICPWR_INDEX", {0}}},
     {{0x1400, 0x45}}},
    {"[[cem_riser]]\nid = 24\npwr_policy = 3\nfru_wp = true\nbmc_pwr_en = false\n"
     "picpwr_index = 0x18",
     {{"CEM_RISER_24_PWR_POLICY", {3}},
      {"CEM_RISER_24_FRU_WP", {1}},
      {"CEM_RISER_24_BMC_PWR_EN", {0}},
      {"CEM_RISER_24_PICPWR_INDEX", {0x18}}},
     {{0x1873, 0xC2}, {0x1875, 0x18}}},
    {"[[cem_riser]]\nid = 2\nbmc_pwr_en = true",
     {{"CEM_RISER_2_FRU_WP", {0}}, {"CEM_RISER_2_BMC_PWR_EN", {1}}},
     {{0x1805, 0x01}}},
    {"[[karn]]\nid = 2\npwr_policy = 1\nfru_wp = true\npicpwr_index = 0x21",
     {{"KARN_2_PWR_POLICY", {1}}, {"KARN_2_FRU_WP", {1}}, {"KARN_2_PICPWR_INDEX", {0x21}}},
     {{0x1A04, 0x41}, {0x1A05, 0x21}}},
    {"[[m2_interposer]]\nid = 2\npwr_policy = 2\nfru_wp = true\npicpwr_index = 0x22",
     {{"M.2_INTERPOSER_2_PWR_POLICY", {2}},
      {"M.2_INTERPOSER_2_FRU_WP", {1}},
      {"M.2_INTERPOSER_2_PICPWR_INDEX", {0x22}}},
     {{0x1C04, 0x81}, {0x1C05, 0x22}}},
    {"[[rida]]\nid = 2\npwr_policy = 3\nfru_wp = true\npicpwr_index = 0x23",
     {{"RIDA_2_PWR_POLICY", {3}}, {"RIDA_2_FRU_WP", {1}}, {"RIDA_2_PICPWR_INDEX", {0x23}}},
     {{0x1E04, 0xC1}, {0x1E05, 0x23}}},
    {"[[puck]]\nid = 16\npwr_policy = 1\nfru_wp = true\npicpwr_index = 0x24",
     {{"PUCK_16_PWR_POLICY", {1}}, {"PUCK_16_FRU_WP", {1}}, {"PUCK_16_PICPWR_INDEX", {0x24}}},
     {{0x203C, 0x41}, {0x203D, 0x24}}},
    {"[[remote_fan]]\npwr_policy = 2\npicpwr_index = 0x25",
     {{"REMOTE_FAN_PWR_POLICY", {2}}, {"REMOTE_FAN_PICPWR_INDEX", {0x25}}},
     {{0x2200, 0x80}, {0x2201, 0x25}}},
    {"[[flop]]\nid = 16\npwr_policy = 3\nfru_wp = true\nocp_present = true\nunhide = true\n"
     "num_links = 2\ncard_type = 9\npicpwr_index = 0x26",
     {{"FLOP_16_PWR_POLICY", {3}},
      {"FLOP_16_FRU_WP", {1}},
      {"FLOP_16_OCP_PRES", {1}},
      {"FLOP_16_UNHIDE", {1}},
      {"FLOP_16_PRSNTB", {9}},
      {"FLOP_16_PICPWR_INDEX", {0x26}}},
     {{0x243C, 0xD1}, {0x243D, 0xA9}, {0x243E, 0x26}}},
    {"[[battery_interposer]]\nid = 2\npwr_policy = 1\nbmc_pwr_en = true\nbattery_ready = true\n"
     "picpwr_index = 0x27",
     {{"BAT_INTRPSR_2_PWR_POLICY", {1}},
      {"BAT_INTRPSR_2_BMC_PWR_EN", {1}},
      {"BAT_INTRPSR_2_BATT_RDY", {1}},
      {"BAT_INTRPSR_2_PICPWR_INDEX", {0x27}}},
     {{0x2604, 0x51}, {0x2605, 0x27}}},
};

TEST(ControlRegisters, instanceYieldsItsNamedRegisters) {
    for (const Described& described : classes) {
        const CpldContents contents = contentsOf(described.description);
        for (const auto& [name, value] : described.named) {
            ASSERT_EQ(contents.named.count(name), 1U) << name;
            EXPECT_EQ(contents.named.at(name), value) << name;
        }
    }
}

TEST(ControlRegisters, instanceYieldsItsRawRegistersAndNoOther) {
    for (const Described& described : classes) {
        Bytes expected(0x10000);
        for (const auto& [address, byte] : described.raw) {
            expected[address] = byte;
        }
        EXPECT_EQ(contentsOf(described.description).raw, expected) << described.description;
    }
}

TEST(ControlRegisters, someRegistersHaveNoName) {
    const CpldContents contents = contentsOf("");
    for (const char* const name : {"BP_1_PWR_POLICY", "BP_1_VWIRE_BP_RST", "FLOP_1_NUM_LINKS"}) {
        EXPECT_EQ(contents.named.count(name), 0U) << name;
    }
}

TEST(ControlRegisters, everyInstanceHasItsNamesEvenIfNotDescribed) {
    const std::map<std::string, unsigned> lastInstances{
        {"DOWNSTREAM_KARN_", 2}, {"DOWNSTREAM_M.2_CARD_", 2}, {"DOWNSTREAM_TULM_", 2}};
    const CpldContents contents = contentsOf("");
    for (const auto& [prefix, last] : lastInstances) {
        EXPECT_EQ(contents.named.at(prefix + "1_FRU_WP"), Bytes{0});
        EXPECT_EQ(contents.named.at(prefix + "1_PAYLOAD_OFFSET"), (Bytes{0, 0}));
        EXPECT_EQ(contents.named.count(prefix + std::to_string(last + 1) + "_FRU_WP"), 0U);
    }
    const std::map<std::string, unsigned> lastIndices{
        {"BP_", 8},   {"CEM_RISER_", 24}, {"KARN_", 2},  {"M.2_INTERPOSER_", 2},
        {"RIDA_", 2}, {"PUCK_", 16},      {"FLOP_", 16}, {"BAT_INTRPSR_", 2},
    };
    for (const auto& [prefix, last] : lastIndices) {
        EXPECT_EQ(contents.named.at(prefix + "1_PICPWR_INDEX"), Bytes{0});
        EXPECT_EQ(contents.named.at(prefix + std::to_string(last) + "_PICPWR_INDEX"), Bytes{0});
        EXPECT_EQ(contents.named.count(prefix + std::to_string(last + 1) + "_PICPWR_INDEX"), 0U);
        EXPECT_EQ(contents.named.count(prefix + "0_PICPWR_INDEX"), 0U);
    }
    EXPECT_EQ(contents.named.at("REMOTE_FAN_PWR_POLICY"), Bytes{0});
    EXPECT_EQ(contents.named.at("1C_CARD_PRES"), Bytes{0});
}

TEST(ControlRegisters, instancesOfOneClassDoNotTouchEachOther) {
    const CpldContents contents = contentsOf("[[flop]]\nid = 3\ncard_type = 5\n"
                                             "[[flop]]\nid = 4\ncard_type = 6\n");
    EXPECT_EQ(contents.named.at("FLOP_2_PRSNTB"), Bytes{0});
    EXPECT_EQ(contents.named.at("FLOP_3_PRSNTB"), Bytes{5});
    EXPECT_EQ(contents.named.at("FLOP_4_PRSNTB"), Bytes{6});
    EXPECT_EQ(contents.raw[0x2409], 5);
    EXPECT_EQ(contents.raw[0x240D], 6);
}

TEST(ControlRegisters, refusesWithFileLineAndReason) {
    const std::pair<const char*, const char*> cases[] = {
        {"cem_riser = 1", "b.toml:1: board: 'cem_riser' must be an array of tables, [[cem_riser]]"},
        {"[[cem_riser]]\nfru_wp = true", "b.toml:1: cem_riser: 'id' is missing"},
        {"[[cem_riser]]\nid = 0", "b.toml:2: cem_riser: 'id' must be a whole number from 1 to 24"},
        {"[[cem_riser]]\nid = 25", "b.toml:2: cem_riser: 'id' must be a whole number from 1 to 24"},
        {"[[backplane]]\nid = 9", "b.toml:2: backplane: 'id' must be a whole number from 1 to 8"},
        {"[[flop]]\nid = 17", "b.toml:2: flop: 'id' must be a whole number from 1 to 16"},
        {"[[karn]]\nid = 3", "b.toml:2: karn: 'id' must be a whole number from 1 to 2"},
        {"[[remote_fan]]\nid = 2", "b.toml:2: remote_fan: 'id' must be a whole number from 1 to 1"},
        {"[[karn]]\nid = 1\n[[karn]]\nid = 2\n[[karn]]\nid = 1",
         "b.toml:6: karn: 1 is described already, at line 2"},
        {"[[remote_fan]]\n[[remote_fan]]",
         "b.toml:2: remote_fan: 1 is described already, at line 1"},
        {"[[karn]]\nid = 1\npwr_policy = 4",
         "b.toml:3: karn: 'pwr_policy' must be a whole number from 0 to 3"},
        {"[[karn]]\nid = 1\nfru_wp = 1", "b.toml:3: karn: 'fru_wp' must be true or false"},
        {"[[flop]]\nid = 1\ncard_type = 16",
         "b.toml:3: flop: 'card_type' must be a whole number from 0 to 15"},
        {"[[connector_1c]]\npayload_offset = 65536",
         "b.toml:2: connector_1c: 'payload_offset' must be a whole number from 0 to 65535"},
        {"[[puck]]\nid = 1\nbmc_pwr_en = true", "b.toml:3: puck: 'bmc_pwr_en' is not a key here"},
        {"[[cem_risers]]\nid = 1",
         "b.toml:1: board: 'cem_risers' is not a key here; did you mean 'cem_riser'?"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
}

} // namespace
} // namespace board
