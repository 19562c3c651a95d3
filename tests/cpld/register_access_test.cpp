#include "cpld/register_access.h"

#include "tests/support/platform.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

using test::Bytes;
using test::platform;
using Calls = std::vector<std::string>;

class RegisterAccess : public testing::Test {
protected:
    RegisterAccess() { test::resetPlatform(); }

    RegisterValue value_;
};

TEST(RegisterName, joinsPrefixNumberAndSuffix) {
    EXPECT_EQ(registerName("PICPWR_", 7, "_DSTAT"), "PICPWR_7_DSTAT");
    EXPECT_EQ(registerName("PICPWR_", 63, "_PAYLOAD_OFFSET"), "PICPWR_63_PAYLOAD_OFFSET");
    EXPECT_EQ(registerName("BP_", 8, "_VWIRE_RDY"), "BP_8_VWIRE_RDY");
    EXPECT_EQ(registerName("CEM_RISER_", 24, "_PWR_POLICY"), "CEM_RISER_24_PWR_POLICY");
    EXPECT_EQ(registerName("N", 4294967295, ""), "N4294967295");
    EXPECT_EQ(registerName("", 0, ""), "0");
}

TEST_F(RegisterAccess, namedReadThatSucceedsIsAllThereIs) {
    platform().named["R"] = {3};
    EXPECT_EQ(readField("R", RawField::bits(0x1000, 7, 6), value_), 0);
    EXPECT_EQ(value_, Bytes{3});
    EXPECT_EQ(platform().calls, Calls{"ReadIO_Str R"});
}

TEST_F(RegisterAccess, namedValueIsNotMasked) {
    platform().named["R"] = {0xFF};
    EXPECT_EQ(readField("R", RawField::bits(0x1000, 0, 0), value_), 0);
    EXPECT_EQ(byteOf(value_), 0xFF);
}

TEST_F(RegisterAccess, valueIsEmptiedBeforeTheRead) {
    platform().named["R"] = {3};
    value_ = {1, 2};
    EXPECT_EQ(readField("R", RawField::byte(0x1000), value_), 0);
    EXPECT_EQ(value_, Bytes{3});
}

TEST_F(RegisterAccess, rawReadFollowsAFailedName) {
    platform().raw[0x1000] = 0xE9;
    EXPECT_EQ(readField("R", RawField::bits(0x1000, 7, 6), value_), 0);
    EXPECT_EQ(value_, Bytes{3});
    EXPECT_EQ(platform().calls, (Calls{"ReadIO_Str R", "cpld_read_device 0x1000 1"}));
}

TEST_F(RegisterAccess, rawFieldsOfOneByte) {
    platform().raw[0x1000] = 0xE9;
    const auto field = [&](unsigned high, unsigned low) {
        value_.clear();
        EXPECT_EQ(readRawField(RawField::bits(0x1000, high, low), value_), 0);
        return byteOf(value_);
    };
    EXPECT_EQ(field(7, 6), 3); // DSTAT
    EXPECT_EQ(field(5, 5), 1); // DBYP
    EXPECT_EQ(field(4, 4), 0); // DPEN
    EXPECT_EQ(field(3, 3), 1); // APEN
    EXPECT_EQ(field(0, 0), 1); // ASTAT
    EXPECT_EQ(field(7, 0), 0xE9);
    EXPECT_EQ(field(3, 0), 9);
}

TEST_F(RegisterAccess, rawWordIsABlockInAddressOrder) {
    platform().raw = {{0x1003, 0x34}, {0x1004, 0x12}};
    EXPECT_EQ(readField("R", RawField::word(0x1003), value_), 0);
    EXPECT_EQ(value_, (Bytes{0x34, 0x12}));
    EXPECT_EQ(wordOf(value_), 0x1234);
    EXPECT_EQ(platform().calls, (Calls{"ReadIO_Str R", "cpld_read_block_device 0x1003 2 1"}));
}

TEST_F(RegisterAccess, rawReadAppends) {
    platform().raw[0x1006] = 5;
    value_ = {1};
    EXPECT_EQ(readRawField(RawField::byte(0x1006), value_), 0);
    EXPECT_EQ(value_, (Bytes{1, 5}));
}

TEST_F(RegisterAccess, statusOfTheRawReadIsTheResult) {
    platform().rawStatus = -110;
    EXPECT_EQ(readField("R", RawField::byte(0x1000), value_), -110);
    EXPECT_EQ(readField("R", RawField::word(0x1000), value_), -110);
    EXPECT_TRUE(value_.empty());
}

TEST_F(RegisterAccess, namedReadKeepsWhatIsInTheValue) {
    platform().named["R"] = {3};
    value_ = {1};
    EXPECT_EQ(readRegister("R", value_), 0);
    EXPECT_EQ(value_, (Bytes{1, 3}));
    EXPECT_NE(readRegister("unknown", value_), 0);
}

TEST_F(RegisterAccess, anAreaComesWithItsSize) {
    platform().named["AREA"] = {1, 2, 3};
    std::uint32_t size = 99;
    EXPECT_EQ(readArea("AREA", value_, size), 0);
    EXPECT_EQ(value_, (Bytes{1, 2, 3}));
    EXPECT_EQ(size, 3U);
    EXPECT_NE(readArea("unknown", value_, size), 0);
    EXPECT_EQ(size, 0U);
}

TEST(RegisterValue, hasNoValueWithTooFewBytes) {
    EXPECT_EQ(byteOf({}), std::nullopt);
    EXPECT_EQ(byteOf({7, 8}), 7);
    EXPECT_EQ(wordOf({}), std::nullopt);
    EXPECT_EQ(wordOf({0x34}), std::nullopt);
    EXPECT_EQ(wordOf({0x34, 0x12, 0x56}), 0x1234);
    EXPECT_EQ(wordOf({0xFF, 0xFF}), 0xFFFF);
}

} // namespace
} // namespace zolt
