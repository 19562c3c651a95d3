#include "payload/field_decoder.h"

#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zolt {
namespace {

std::string printed(const Fields& fields) {
    return test::outputOf([&] { printFields(fields); });
}

struct Place {
    const char* name;
    Bits bits;
    std::uint16_t value;
};

class FieldValue : public testing::TestWithParam<Place> {};

TEST_P(FieldValue, comesFromItsBits) {
    const std::vector<std::uint8_t> bytes{0x00, 0xB4, 0x5E};
    FieldDecoder fields(bytes);
    EXPECT_EQ(fields.add(ValueRow{GetParam().bits, "%d\n"}), GetParam().value);
    EXPECT_EQ(printed(fields.take()), std::to_string(GetParam().value) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Places, FieldValue,
                         testing::Values(Place{"byte", Bits::byte(1), 0xB4},           //
                                         Place{"topBit", Bits::bit(1, 7), 1},          //
                                         Place{"bottomBit", Bits::bit(1, 0), 0},       //
                                         Place{"topBits", Bits::range(1, 7, 5), 5},    //
                                         Place{"bottomBits", Bits::range(1, 2, 0), 4}, //
                                         Place{"bitsBetween", Bits::range(1, 5, 2), 13},
                                         Place{"bigEndian", Bits::bigEndian(1), 0xB45E},
                                         Place{"littleEndianWhole", Bits::littleEndian(1, 8),
                                               0x5EB4},
                                         Place{"littleEndianCut", Bits::littleEndian(1, 2), 0x2B4}),
                         [](const auto& tested) { return tested.param.name; });

TEST(FieldDecoder, yieldsLinesOfEveryKindInOrder) {
    const std::vector<std::uint8_t> bytes{1, 2, 'x', 'y', 0};
    constexpr ValueRow values[] = {{Bits::byte(0), "a = %d\n"}, {Bits::byte(1), "b = 0x%02X\n"}};
    constexpr UnitRow units[] = {{Bits::byte(0), "c%d = %d\n"}, {Bits::byte(1), "d%d = %d\n"}};
    FieldDecoder fields(bytes);
    fields.heading("HEADING\n");
    fields.heading("UNIT %d\n", 200);
    fields.add(values);
    fields.add(values, 1);
    fields.add(units, 9, 0);
    fields.add(TextRow{0, 3, "text = %s\n"}, 2);
    EXPECT_EQ(printed(fields.take()), "HEADING\n"
                                      "UNIT 200\n"
                                      "a = 1\n"
                                      "b = 0x02\n"
                                      "a = 2\n"
                                      "b = 0x78\n"
                                      "c9 = 1\n"
                                      "d9 = 2\n"
                                      "text = xy\n");
}

// Each way to run off the end, tried on two bytes; what follows it is not decoded any more.
TEST(FieldDecoder, endsAtTheFirstLineThatIsNotAllThere) {
    const std::vector<std::uint8_t> bytes{1, 2};
    constexpr ValueRow last{Bits::byte(1), "last = %d\n"};
    const std::vector<void (*)(FieldDecoder&)> ends{
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::byte(2), "%d\n"}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::bigEndian(1), "%d\n"}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::littleEndian(1, 2), "%d\n"}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::byte(0), "%d\n"}, 2), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(UnitRow{Bits::byte(2), "%d %d\n"}, 1, 0), 0);
        },
        [](FieldDecoder& fields) {
            fields.add(TextRow{1, 2, "%s\n"});
        },
    };
    for (const auto& runOff : ends) {
        FieldDecoder fields(bytes);
        fields.add(last);
        runOff(fields);
        fields.heading("no more\n");
        fields.heading("no more %d\n", 1);
        EXPECT_EQ(fields.add(last), 0);
        EXPECT_EQ(fields.add(UnitRow{Bits::byte(0), "%d %d\n"}, 1, 0), 0);
        fields.add(TextRow{0, 1, "%s\n"});
        EXPECT_EQ(printed(fields.take()), "last = 2\n");
    }
}

} // namespace
} // namespace zolt
