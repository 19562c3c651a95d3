#include "capture/slots.h"

#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <ranges>
#include <string>
#include <vector>

namespace capture {
namespace {

using zolt::test::platform;
using Calls = std::vector<std::string>;

constexpr std::uint16_t block7 = 0x1054; // of PICPWR 7: 0x1000 + 14 * 6

class Slots : public testing::Test {
protected:
    Slots() {
        zolt::test::resetPlatform();
        // The slots that a test does not fill are empty.
        for (unsigned n = 1; n <= 63; ++n) {
            platform().named["PICPWR_" + std::to_string(n) + "_DSTAT"] = {0};
        }
    }

    // Gives PICPWR 7 all registers: by name, and raw.
    static void fillSlot7() {
        auto& named = platform().named;
        named["PICPWR_7_DSTAT"] = {3};
        named["PICPWR_7_DBYP"] = {0};
        named["PICPWR_7_DPEN"] = {1};
        named["PICPWR_7_APEN"] = {1};
        named["PICPWR_7_ASTAT"] = {1};
        named["PICPWR_7_MOD_CLASS"] = {0x2A};
        named["PICPWR_7_MOD_CLASS_IDX"] = {9};
        named["PICPWR_7_PAYLOAD_OFFSET"] = {0x34, 0x12};
        std::uint8_t value = 0xD9;
        for (std::uint16_t i = 0; i < 14; ++i) {
            platform().raw[block7 + i] = value++;
        }
    }

    Observation read() {
        Observation observation;
        readSlots(observation, noProgress);
        return observation;
    }

    // The calls that concern PICPWR 7.
    static Calls callsOfSlot7() {
        Calls calls;
        for (const std::string& call : platform().calls) {
            const std::size_t address = call.find(" 0x10");
            const bool isRaw = address != std::string::npos &&
                               call.substr(address + 1, 6) >= "0x1054" &&
                               call.substr(address + 1, 6) < "0x1062";
            if (call.find("PICPWR_7_") != std::string::npos || isRaw) {
                calls.push_back(call);
            }
        }
        return calls;
    }
};

const Calls allOfSlot7{
    "ReadIO_Str PICPWR_7_DSTAT",         "cpld_read_device 0x1054 1",
    "ReadIO_Str PICPWR_7_DBYP", // the same raw register
    "ReadIO_Str PICPWR_7_DPEN",          "ReadIO_Str PICPWR_7_APEN",
    "ReadIO_Str PICPWR_7_ASTAT",         "ReadIO_Str PICPWR_7_MOD_CLASS",
    "cpld_read_device 0x1055 1",         "ReadIO_Str PICPWR_7_MOD_CLASS_IDX",
    "cpld_read_device 0x1056 1",         "ReadIO_Str PICPWR_7_PAYLOAD_OFFSET",
    "cpld_read_block_device 0x1057 2 1",
    "cpld_read_device 0x105A 1", // DSL1_ID to DSL8_ID
    "cpld_read_device 0x105B 1",         "cpld_read_device 0x105C 1",
    "cpld_read_device 0x105D 1",         "cpld_read_device 0x105E 1",
    "cpld_read_device 0x105F 1",         "cpld_read_device 0x1060 1",
    "cpld_read_device 0x1061 1",
};

TEST_F(Slots, eachRegisterIsReadOnceByNameAndRaw) {
    fillSlot7();
    const Observation observation = read();
    EXPECT_EQ(callsOfSlot7(), allOfSlot7);

    EXPECT_EQ(observation.named.at("PICPWR_7_MOD_CLASS").bytes, Bytes{0x2A});
    EXPECT_EQ(observation.named.at("PICPWR_7_PAYLOAD_OFFSET").bytes, (Bytes{0x34, 0x12}));
    EXPECT_EQ(observation.rawBytes.at(block7).bytes, Bytes{0xD9}); // the whole byte
    EXPECT_EQ(observation.rawWords.at(block7 + 3).bytes, (Bytes{0xDC, 0xDD}));
    EXPECT_EQ(observation.rawBytes.at(block7 + 13).bytes, Bytes{0xE6});
}

TEST_F(Slots, allSlotsAreLookedAt) {
    const Observation observation = read();
    Calls expected;
    for (unsigned n = 1; n <= 63; ++n) {
        expected.push_back("ReadIO_Str PICPWR_" + std::to_string(n) + "_DSTAT");
    }
    Calls named = platform().calls;
    std::erase_if(named, [](const std::string& call) { return !call.starts_with("ReadIO_Str"); });
    EXPECT_EQ(named, expected);
    EXPECT_EQ(observation.named.size(), 63U);
    EXPECT_EQ(observation.rawBytes.size(), 63U);
    EXPECT_TRUE(observation.rawBytes.contains(0x1000));
    EXPECT_TRUE(observation.rawBytes.contains(0x1364));
}

TEST_F(Slots, progressCountsTheSlots) {
    Observation observation;
    std::vector<unsigned> done;
    readSlots(observation, [&](std::string_view part, unsigned now, unsigned all) {
        EXPECT_EQ(part, "slots");
        EXPECT_EQ(all, 63U);
        done.push_back(now);
    });
    EXPECT_EQ(done.size(), 63U);
    EXPECT_EQ(done.front(), 0U);
    EXPECT_EQ(done.back(), 62U);
}

struct Dstat {
    const char* what;
    bool isNamed;
    Bytes named;
    int raw; ///< below 0: cannot be read
    bool goesOn;
};

class SlotsByDstat : public Slots, public testing::WithParamInterface<Dstat> {};

TEST_P(SlotsByDstat, areReadAsFarAsTheReportReadsThem) {
    const Dstat& dstat = GetParam();
    fillSlot7();
    if (dstat.isNamed) {
        platform().named["PICPWR_7_DSTAT"] = dstat.named;
    } else {
        platform().named.erase("PICPWR_7_DSTAT");
    }
    if (dstat.raw < 0) {
        platform().raw.erase(block7);
    } else {
        platform().raw[block7] = static_cast<std::uint8_t>(dstat.raw);
    }
    const Observation observation = read();
    const Calls onlyDstat(allOfSlot7.begin(), allOfSlot7.begin() + 2);
    EXPECT_EQ(callsOfSlot7(), dstat.goesOn ? allOfSlot7 : onlyDstat);
    EXPECT_EQ(observation.named.at("PICPWR_7_DSTAT").status, dstat.isNamed ? 0 : -1);
    EXPECT_EQ(observation.named.at("PICPWR_7_DSTAT").bytes, dstat.named);
    EXPECT_EQ(observation.rawBytes.at(block7).status, dstat.raw < 0 ? 5 : 0);
    EXPECT_EQ(observation.rawBytes.at(block7).bytes.size(), dstat.raw < 0 ? 0U : 1U);
}

INSTANTIATE_TEST_SUITE_P(Every, SlotsByDstat,
                         testing::Values(Dstat{"namedModule", true, {1}, 0x00, true},
                                         Dstat{"namedEmpty", true, {0}, 0xFF, false},
                                         Dstat{"namedWithoutBytes", true, {}, 0x00, true},
                                         Dstat{"namedAboveThree", true, {7}, 0x00, true},
                                         Dstat{"namedAndRawRefused", true, {2}, -1, true},
                                         Dstat{"rawModule", false, {}, 0x40, true},
                                         Dstat{"rawEmpty", false, {}, 0x3F, false},
                                         Dstat{"bothRefused", false, {}, -1, false}),
                         [](const auto& slot) { return std::string(slot.param.what); });

TEST_F(Slots, refusedRegistersAreRecordedAndDoNotEndTheSlot) {
    fillSlot7();
    platform().named.erase("PICPWR_7_DBYP");
    platform().named.erase("PICPWR_7_PAYLOAD_OFFSET");
    platform().raw.erase(block7 + 4);
    platform().raw.erase(block7 + 6);
    const Observation observation = read();
    EXPECT_EQ(callsOfSlot7(), allOfSlot7);
    EXPECT_EQ(observation.named.at("PICPWR_7_DBYP").status, -1);
    EXPECT_EQ(observation.named.at("PICPWR_7_DBYP").bytes, Bytes{}); // not the HAL's garbage
    EXPECT_EQ(observation.rawWords.at(block7 + 3).status, 5);
    EXPECT_EQ(observation.rawBytes.at(block7 + 6).status, 5);
}

TEST_F(Slots, moreBytesThanARegisterCanHaveAreCut) {
    fillSlot7();
    platform().named["PICPWR_7_MOD_CLASS"] = Bytes(100'000, 0x11);
    EXPECT_EQ(read().named.at("PICPWR_7_MOD_CLASS").bytes, Bytes(mostRegisterBytes, 0x11));
}

} // namespace
} // namespace capture
