#include "cpld/register_access.h"

#include "console/output.h"
#include "tests/support/console.h"
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

std::string nameOf(std::string_view prefix, unsigned instance, std::string_view suffix) {
    return std::string(RegisterBlock(prefix, instance, 0).name(suffix));
}

TEST(RegisterBlock, namesAreMadeOfPrefixNumberAndSuffix) {
    EXPECT_EQ(nameOf("PICPWR_", 7, "_DSTAT"), "PICPWR_7_DSTAT");
    EXPECT_EQ(nameOf("PICPWR_", 63, "_PAYLOAD_OFFSET"), "PICPWR_63_PAYLOAD_OFFSET");
    EXPECT_EQ(nameOf("BP_", 8, "_VWIRE_RDY"), "BP_8_VWIRE_RDY");
    EXPECT_EQ(nameOf("CEM_RISER_", 24, "_PWR_POLICY"), "CEM_RISER_24_PWR_POLICY");
    EXPECT_EQ(nameOf("N", 255, ""), "N255");
    EXPECT_EQ(nameOf("N", 4294967295, ""), "N4294967295");
    EXPECT_EQ(nameOf("", 0, ""), "0");
}

TEST(RegisterBlock, oneBlockNamesItsRegistersInAnyOrder) {
    RegisterBlock block("BP_", 3, 0);
    EXPECT_EQ(block.name("_VWIRE_SMBUS_RST"), "BP_3_VWIRE_SMBUS_RST");
    EXPECT_EQ(block.name("_X"), "BP_3_X");
    EXPECT_EQ(block.name("_PICPWR_INDEX"), "BP_3_PICPWR_INDEX");
}

TEST(RegisterBlock, nameWithoutAPrefixIsTheSuffixAlone) {
    EXPECT_EQ(RegisterBlock(0x13C4).name("4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET"),
              "4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET");
}

TEST(RegisterBlock, longNamesAreCut) {
    const std::string longName(65, 'n');
    const std::string longest(64, 'n');
    EXPECT_EQ(RegisterBlock(0).name(longName), longest);
    EXPECT_EQ(nameOf(longName, 7, "_DSTAT"), longest);
    EXPECT_EQ(nameOf(longest.substr(2), 123, "_DSTAT"), longest.substr(2) + "12");
}

TEST_F(RegisterAccess, textIsHandedOutBeforeEveryRead) {
    platform().raw = {{0x1000, 1}, {0x1001, 2}};
    (void)test::outputOf([&] {
        write("named ");
        EXPECT_NE(readRegister("UNKNOWN", value_), 0);
        write("byte ");
        EXPECT_EQ(readRawField(RawField::byte(0x1000), value_), 0);
        write("word ");
        EXPECT_EQ(readRawField(RawField::word(0x1000), value_), 0);
    });
    EXPECT_EQ(platform().printed, (Calls{"named ", "named byte ", "named byte word "}));
}

TEST_F(RegisterAccess, blockReadsByNameOrElseFromItsAddress) {
    RegisterBlock block("BP_", 2, 0x1409);
    platform().named["BP_2_VWIRE_RDY"] = {1};
    platform().raw[0x140A] = 0x5A;
    EXPECT_EQ(block.read("_VWIRE_RDY", RawField::bits(0, 1, 1), value_), 0);
    EXPECT_EQ(value_, Bytes{1});
    EXPECT_EQ(block.read("_PICPWR_INDEX", RawField::byte(1), value_), 0);
    EXPECT_EQ(value_, Bytes{0x5A});
    EXPECT_EQ(block.readRaw(RawField::bits(1, 7, 4), value_), 0);
    EXPECT_EQ(value_, Bytes{5});
    EXPECT_EQ(platform().calls, (Calls{"ReadIO_Str BP_2_VWIRE_RDY", "ReadIO_Str BP_2_PICPWR_INDEX",
                                       "cpld_read_device 0x140A 1", "cpld_read_device 0x140A 1"}));
}

TEST_F(RegisterAccess, successfulNamedReadIsTheOnlyRead) {
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

TEST_F(RegisterAccess, rawFieldsAreBitsOfTheirByte) {
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

TEST_F(RegisterAccess, namedReadAppends) {
    platform().named["R"] = {3};
    value_ = {1};
    EXPECT_EQ(readRegister("R", value_), 0);
    EXPECT_EQ(value_, (Bytes{1, 3}));
    EXPECT_NE(readRegister("unknown", value_), 0);
}

TEST_F(RegisterAccess, areaIsReadWithItsSize) {
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
