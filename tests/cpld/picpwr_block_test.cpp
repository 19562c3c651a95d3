#include "cpld/picpwr_block.h"

#include "tests/support/platform.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

using test::platform;

TEST(PicpwrBlock, everyIdHasAnAddress) {
    EXPECT_EQ(picpwrBlockAddress(1), 0x1000);
    EXPECT_EQ(picpwrBlockAddress(2), 0x100E);
    EXPECT_EQ(picpwrBlockAddress(63), 0x1364);
    EXPECT_EQ(picpwrBlockAddress(63) + picpwrDslOffset + picpwrDslCount - 1, 0x1371);
    // The command line may pass an ID beyond the slots.
    EXPECT_EQ(picpwrBlockAddress(255), 0x1DE4);
}

struct Register {
    PicpwrRegister field;
    const char* name;
    std::uint16_t address; ///< in the block of PICPWR 7, which starts at 0x1054
    std::vector<std::uint8_t> raw;
    RegisterValue value;
};

TEST(PicpwrBlock, everyRegisterHasItsNameAndAddress) {
    const Register registers[] = {
        {picpwrDstat, "PICPWR_7_DSTAT", 0x1054, {0x80}, {2}},
        {picpwrDbyp, "PICPWR_7_DBYP", 0x1054, {0x20}, {1}},
        {picpwrDpen, "PICPWR_7_DPEN", 0x1054, {0x10}, {1}},
        {picpwrApen, "PICPWR_7_APEN", 0x1054, {0x08}, {1}},
        {picpwrAstat, "PICPWR_7_ASTAT", 0x1054, {0x01}, {1}},
        {picpwrModuleClass, "PICPWR_7_MOD_CLASS", 0x1055, {0x2A}, {0x2A}},
        {picpwrModuleClassIndex, "PICPWR_7_MOD_CLASS_IDX", 0x1056, {0xC3}, {0xC3}},
        {picpwrPayloadOffset, "PICPWR_7_PAYLOAD_OFFSET", 0x1057, {0x34, 0x12}, {0x34, 0x12}},
    };
    for (const Register& each : registers) {
        test::resetPlatform();
        for (std::size_t i = 0; i < each.raw.size(); ++i) {
            platform().raw[each.address + static_cast<std::uint32_t>(i)] = each.raw[i];
        }
        RegisterValue value;
        EXPECT_EQ(PicpwrBlock(7).read(each.field, value), 0) << each.name;
        EXPECT_EQ(value, each.value) << each.name;
        EXPECT_EQ(platform().calls.at(0), std::string("ReadIO_Str ") + each.name);
    }
}

TEST(PicpwrBlock, dslsAreReadRawFromTheirAddresses) {
    test::resetPlatform();
    platform().raw[0x105A] = 11;
    platform().raw[0x1061] = 88;
    RegisterValue value{1, 2, 3};
    EXPECT_EQ(PicpwrBlock(7).readDsl(1, value), 0);
    EXPECT_EQ(value, RegisterValue{11});
    EXPECT_EQ(PicpwrBlock(7).readDsl(8, value), 0);
    EXPECT_EQ(value, RegisterValue{88});
    EXPECT_EQ(platform().calls,
              (std::vector<std::string>{"cpld_read_device 0x105A 1", "cpld_read_device 0x1061 1"}));
}

} // namespace
} // namespace zolt
