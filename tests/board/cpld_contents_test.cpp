#include "board/cpld_contents.h"

#include "board/board_loader.h"
#include "board/slot_registers.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace board {
namespace {

Bytes rawAt(const CpldContents& contents, std::size_t address, std::size_t count) {
    const auto start = contents.raw.begin() + static_cast<std::ptrdiff_t>(address);
    return {start, start + static_cast<std::ptrdiff_t>(count)};
}

constexpr const char* slotSeven = R"(
[[slot]]
id = 7
dstat = 3
dbyp = true
apen = true
astat = true
module_class = 0x2A
module_class_index = 4
payload_offset = 0x1234
dsl_ids = [1, 2, 3, 4, 5, 6, 7, 8]
payload = [0xAA, 0xBB]
)";

TEST(CpldContents, slotYieldsItsRawBlock) {
    const CpldContents contents = deriveCpldContents(test::boardOf(slotSeven, "b"));
    EXPECT_EQ(rawAt(contents, 0x1054, 14),
              (Bytes{0xE9, 0x2A, 4, 0x34, 0x12, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(rawAt(contents, 0x2A01 + 0x1234, 2), (Bytes{0xAA, 0xBB}));
    // Every other byte is 0.
    EXPECT_EQ(std::ranges::count(contents.raw, 0), 0x10000 - 13 - 2);
}

TEST(CpldContents, slotYieldsItsNamedRegisters) {
    const CpldContents contents = deriveCpldContents(test::boardOf(slotSeven, "b"));
    EXPECT_EQ(contents.named.at("PICPWR_7_DSTAT"), Bytes{3});
    EXPECT_EQ(contents.named.at("PICPWR_7_DBYP"), Bytes{1});
    EXPECT_EQ(contents.named.at("PICPWR_7_DPEN"), Bytes{0});
    EXPECT_EQ(contents.named.at("PICPWR_7_APEN"), Bytes{1});
    EXPECT_EQ(contents.named.at("PICPWR_7_ASTAT"), Bytes{1});
    EXPECT_EQ(contents.named.at("PICPWR_7_MOD_CLASS"), Bytes{0x2A});
    EXPECT_EQ(contents.named.at("PICPWR_7_MOD_CLASS_IDX"), Bytes{4});
    EXPECT_EQ(contents.named.at("PICPWR_7_PAYLOAD_OFFSET"), (Bytes{0x34, 0x12}));
}

TEST(CpldContents, emptySlotsHaveTheirNamesToo) {
    const CpldContents contents = deriveCpldContents(test::boardOf("", "b"));
    EXPECT_EQ(contents.named.at("PICPWR_1_DSTAT"), Bytes{0});
    EXPECT_EQ(contents.named.at("PICPWR_63_PAYLOAD_OFFSET"), (Bytes{0, 0}));
    EXPECT_EQ(contents.named.count("PICPWR_0_DSTAT"), 0U);
    EXPECT_EQ(contents.named.count("PICPWR_64_DSTAT"), 0U);
}

TEST(CpldContents, overridesTouchOnlyWhatTheyName) {
    const CpldContents contents = deriveCpldContents(test::boardOf(
        std::string(slotSeven) + "[override.named]\nPICPWR_7_DSTAT = [1, 2]\nNEW = 5\n"
                                 "[override.raw]\n0x1055 = 0x11\n",
        "b"));
    EXPECT_EQ(contents.named.at("PICPWR_7_DSTAT"), (Bytes{1, 2}));
    EXPECT_EQ(contents.named.at("NEW"), Bytes{5});
    EXPECT_EQ(contents.named.at("PICPWR_7_MOD_CLASS"), Bytes{0x2A});
    EXPECT_EQ(rawAt(contents, 0x1054, 3), (Bytes{0xE9, 0x11, 4}));
}

// The fields by name and the fields in the block are the same.
TEST(CpldContents, slotFieldsAreThoseOfTheLayout) {
    const CpldContents contents = deriveCpldContents(test::boardOf(slotSeven, "b"));
    const Bytes block = rawAt(contents, 0x1054, slotBlockSize);
    for (const ControlField& field : slotFields) {
        if (!field.suffix.empty()) {
            const Bytes& named = contents.named.at(std::string("PICPWR_7").append(field.suffix));
            const std::uint32_t value = field.bits.decode(block);
            EXPECT_EQ(named[0], value & 0xFF) << field.bits.key;
            EXPECT_EQ(named.size() > 1 ? named[1] : 0, value >> 8) << field.bits.key;
        }
    }
    EXPECT_EQ(slotFields[8].bits.decode(block), 1);
    EXPECT_EQ(slotFields[15].bits.decode(block), 8);
}

} // namespace
} // namespace board
