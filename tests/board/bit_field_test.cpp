#include "board/bit_field.h"

#include "board/bytes.h"
#include "board/field_reader.h"

#include <gtest/gtest.h>

namespace board {
namespace {

struct Placement {
    BitField field;
    std::uint32_t value;
    Bytes inZeros; ///< a record of zeros after encoding
    Bytes inOnes;  ///< a record of ones after encoding
};

const Placement placements[] = {
    {BitField::byte("x", 1), 0xA5, {0, 0xA5, 0}, {0xFF, 0xA5, 0xFF}},
    {BitField::bit("x", 0, 7), 1, {0x80, 0, 0}, {0xFF, 0xFF, 0xFF}},
    {BitField::bit("x", 0, 7), 0, {0, 0, 0}, {0x7F, 0xFF, 0xFF}},
    {BitField::bits("x", 2, 6, 4), 5, {0, 0, 0x50}, {0xFF, 0xFF, 0xDF}},
    {BitField::bits("x", 2, 3, 0), 9, {0, 0, 0x09}, {0xFF, 0xFF, 0xF9}},
    {BitField::bigEndian("x", 1), 0x1234, {0, 0x12, 0x34}, {0xFF, 0x12, 0x34}},
    {BitField::littleEndian("x", 0), 0x1234, {0x34, 0x12, 0}, {0x34, 0x12, 0xFF}},
    {BitField::littleEndian("x", 0, 2), 0x2C5, {0xC5, 0x02, 0}, {0xC5, 0xFE, 0xFF}},
};

TEST(BitField, encodesOnlyItsOwnBits) {
    for (const Placement& placement : placements) {
        Bytes zeros(3);
        Bytes ones(3, 0xFF);
        placement.field.encode(placement.value, zeros);
        placement.field.encode(placement.value, ones);
        EXPECT_EQ(zeros, placement.inZeros);
        EXPECT_EQ(ones, placement.inOnes);
    }
}

TEST(BitField, decodesOnlyItsOwnBits) {
    for (const Placement& placement : placements) {
        EXPECT_EQ(placement.field.decode(placement.inZeros), placement.value);
        EXPECT_EQ(placement.field.decode(placement.inOnes), placement.value);
    }
}

TEST(BitField, knowsItsHighestValue) {
    EXPECT_EQ(BitField::bit("x", 0, 3).highest(), 1U);
    EXPECT_EQ(BitField::bits("x", 0, 6, 4).highest(), 7U);
    EXPECT_EQ(BitField::byte("x", 0).highest(), 0xFFU);
    EXPECT_EQ(BitField::bigEndian("x", 0).highest(), 0xFFFFU);
    EXPECT_EQ(BitField::littleEndian("x", 0, 2).highest(), 0x3FFU);
}

TEST(BitField, tableSetsItsKeysAndLeavesTheOtherFields) {
    constexpr BitField fields[] = {
        BitField::bit("flag", 0, 0),
        BitField::bit("other_flag", 0, 1),
        BitField::bits("low", 0, 7, 4),
        BitField::bigEndian("word", 1),
    };
    const toml::table document = toml::parse("flag = true\nother_flag = false\nword = 0xFFFF");
    const Reading reading{.files = {"b"}};
    TomlTable table(document, "record", reading);
    Bytes record{0x92, 0, 0};
    readFields(table, fields, record);
    EXPECT_EQ(record, (Bytes{0x91, 0xFF, 0xFF}));
    EXPECT_NO_THROW(table.finish());
}

} // namespace
} // namespace board
