#include "cpld/picpwr_info.h"

#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

using test::outputOf;
using test::platform;
using Calls = std::vector<std::string>;

class PicpwrInfo : public testing::Test {
protected:
    PicpwrInfo() { test::resetPlatform(); }

    std::string report(std::uint8_t id) {
        return outputOf([&] { status_ = showPicpwrInfo(id); });
    }

    Status status_ = -1;
};

TEST_F(PicpwrInfo, readsEachRegisterOnceInOrder) {
    for (std::uint32_t address = 0x100E; address < 0x101C; ++address) {
        platform().raw[address] = 0xFF;
    }
    EXPECT_EQ(report(2), R"(
PICPWR 02 DSTAT              = 11b
PICPWR 02 DBYP               = 1
PICPWR 02 DPEN               = 1
PICPWR 02 APEN               = 1
PICPWR 02 ASTAT              = 1
PICPWR 02 Module Class       = 0xFF
PICPWR 02 Module Class Index = 255
PICPWR 02 Payload Offset     = 65535
PICPWR 02 DSL1_ID            = 255
PICPWR 02 DSL2_ID            = 255
PICPWR 02 DSL3_ID            = 255
PICPWR 02 DSL4_ID            = 255
PICPWR 02 DSL5_ID            = 255
PICPWR 02 DSL6_ID            = 255
PICPWR 02 DSL7_ID            = 255
PICPWR 02 DSL8_ID            = 255
)");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(platform().calls,
              (Calls{
                  "ReadIO_Str PICPWR_2_DSTAT",          "cpld_read_device 0x100E 1",
                  "ReadIO_Str PICPWR_2_DBYP",           "cpld_read_device 0x100E 1",
                  "ReadIO_Str PICPWR_2_DPEN",           "cpld_read_device 0x100E 1",
                  "ReadIO_Str PICPWR_2_APEN",           "cpld_read_device 0x100E 1",
                  "ReadIO_Str PICPWR_2_ASTAT",          "cpld_read_device 0x100E 1",
                  "ReadIO_Str PICPWR_2_MOD_CLASS",      "cpld_read_device 0x100F 1",
                  "ReadIO_Str PICPWR_2_MOD_CLASS_IDX",  "cpld_read_device 0x1010 1",
                  "ReadIO_Str PICPWR_2_PAYLOAD_OFFSET", "cpld_read_block_device 0x1011 2 1",
                  "cpld_read_device 0x1014 1",          "cpld_read_device 0x1015 1",
                  "cpld_read_device 0x1016 1",          "cpld_read_device 0x1017 1",
                  "cpld_read_device 0x1018 1",          "cpld_read_device 0x1019 1",
                  "cpld_read_device 0x101A 1",          "cpld_read_device 0x101B 1",
              }));
}

TEST_F(PicpwrInfo, emptySlotHasNoFurtherReads) {
    platform().named["PICPWR_5_DSTAT"] = {0};
    EXPECT_EQ(report(5), "\nPICPWR 05 DSTAT              = 00b\n");
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(platform().calls, Calls{"ReadIO_Str PICPWR_5_DSTAT"});
}

TEST_F(PicpwrInfo, idsBeyondTheSlotsReadNothing) {
    for (const std::uint8_t id : std::initializer_list<std::uint8_t>{64, 128, 255}) {
        EXPECT_EQ(report(id), "");
        EXPECT_EQ(status_, 0);
    }
    EXPECT_TRUE(platform().calls.empty());
}

TEST_F(PicpwrInfo, everySlotReportsItsFailedRead) {
    platform().rawStatus = 13;
    std::string expected;
    for (int n = 1; n <= 63; ++n) {
        expected +=
            "Unable to read PICPWR " + std::to_string(n) + " DSTAT using CPLD raw API, status 13\n";
    }
    EXPECT_EQ(report(0), expected);
    EXPECT_EQ(status_, 0);
}

TEST_F(PicpwrInfo, unreadablePayloadOffsetEndsTheReport) {
    for (int n = 1; n <= 63; ++n) {
        platform().named["PICPWR_" + std::to_string(n) + "_DSTAT"] = {0};
    }
    platform().named["PICPWR_3_DSTAT"] = {1};
    for (const char* const name :
         {"_DBYP", "_DPEN", "_APEN", "_ASTAT", "_MOD_CLASS", "_MOD_CLASS_IDX"}) {
        platform().named[std::string("PICPWR_3") + name] = {0x1A};
    }
    platform().raw[0x101F] = 0; // a block read needs both of its bytes
    EXPECT_EQ(report(0), R"(
PICPWR 01 DSTAT              = 00b

PICPWR 02 DSTAT              = 00b

PICPWR 03 DSTAT              = 01b
PICPWR 03 DBYP               = 26
PICPWR 03 DPEN               = 26
PICPWR 03 APEN               = 26
PICPWR 03 ASTAT              = 26
PICPWR 03 Module Class       = 0x1A
PICPWR 03 Module Class Index = 26
Unable to read PICPWR payload offset using CPLD raw API, status 5
)");
    EXPECT_EQ(status_, 11);
}

} // namespace
} // namespace zolt
