#include "capture/control_registers.h"

#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace capture {
namespace {

using zolt::test::platform;
using Calls = std::vector<std::string>;

class ControlRegisters : public testing::Test {
protected:
    ControlRegisters() { zolt::test::resetPlatform(); }

    static Observation read() {
        Observation observation;
        readControlRegisters(observation, noProgress);
        return observation;
    }

    // The calls from the first one with @p text on.
    static Calls callsFrom(const std::string& text, std::size_t count) {
        const Calls& calls = platform().calls;
        const auto first = std::ranges::find_if(
            calls, [&](const std::string& call) { return call.find(text) != std::string::npos; });
        return {first, first + std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(count),
                                                        calls.end() - first)};
    }
};

TEST_F(ControlRegisters, aSingleUnitIsReadByNameAndRaw) {
    platform().named["1C_CARD_PRES"] = {1};
    platform().raw[0x13BE] = 0xFF;
    platform().raw[0x13BF] = 0x34;
    platform().raw[0x13C0] = 0x12;
    const Observation observation = read();
    EXPECT_EQ(callsFrom("1C_CARD_PRES", 4),
              (Calls{"ReadIO_Str 1C_CARD_PRES", "cpld_read_device 0x13BE 1",
                     "ReadIO_Str 1C_CONNECTOR_PCARD_PAYLOAD_OFFSET",
                     "cpld_read_block_device 0x13BF 2 1"}));
    EXPECT_EQ(observation.named.at("1C_CARD_PRES").bytes, Bytes{1});
    EXPECT_EQ(observation.named.at("1C_CONNECTOR_PCARD_PAYLOAD_OFFSET").status, -1);
    EXPECT_EQ(observation.rawBytes.at(0x13BE).bytes, Bytes{0xFF});
    EXPECT_EQ(observation.rawWords.at(0x13BF).bytes, (Bytes{0x34, 0x12}));
}

TEST_F(ControlRegisters, aByteWithSeveralFieldsIsReadOnce) {
    read();
    EXPECT_EQ(callsFrom("CEM_RISER_24_", 6),
              (Calls{"ReadIO_Str CEM_RISER_24_PWR_POLICY", "cpld_read_device 0x1873 1",
                     "ReadIO_Str CEM_RISER_24_FRU_WP", "ReadIO_Str CEM_RISER_24_BMC_PWR_EN",
                     "ReadIO_Str CEM_RISER_24_PICPWR_INDEX", "cpld_read_device 0x1875 1"}));
}

TEST_F(ControlRegisters, registersWithoutANameAreReadOnlyRaw) {
    const Observation observation = read();
    EXPECT_EQ(callsFrom("cpld_read_device 0x1409", 6),
              (Calls{"cpld_read_device 0x1409 1", "ReadIO_Str BP_2_VWIRE_SMBUS_RST",
                     "ReadIO_Str BP_2_VWIRE_RDY", "ReadIO_Str BP_2_VWIRE_DOWNSTREAM_MODE",
                     "ReadIO_Str BP_2_PICPWR_INDEX", "cpld_read_device 0x140A 1"}));
    for (const char* const name : {"BP_1_PWR_POLICY", "BP_8_VWIRE_BP_RST", "FLOP_1_NUM_LINKS"}) {
        EXPECT_FALSE(observation.named.contains(name)) << name;
    }
}

TEST_F(ControlRegisters, allClassesAreReadAndEachRegisterOnce) {
    read();
    const Calls& calls = platform().calls;
    EXPECT_EQ(std::set<std::string>(calls.begin(), calls.end()).size(), calls.size());
    // By class: the names and the raw reads of an instance, and the number of instances.
    constexpr std::size_t expected = 1 * (2 + 2) + 1 * (2 + 2) + 3 * 2 * (3 + 3) + 8 * (4 + 2) +
                                     24 * (4 + 2) + 3 * 2 * (3 + 2) + 16 * (3 + 2) + 1 * (2 + 2) +
                                     16 * (6 + 3) + 2 * (4 + 2);
    EXPECT_EQ(calls.size(), expected);
    EXPECT_EQ(calls.back(), "cpld_read_device 0x2605 1");
}

} // namespace
} // namespace capture
