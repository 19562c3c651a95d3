#include "payload/field_decoder.h"

#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zolt::field_decoder_test {
namespace {

// Decodes bytes and returns the printed fields.
template <typename Decode>
std::string printed(const std::vector<std::uint8_t>& bytes, Decode decode) {
    return test::outputOf([&] {
        FieldDecoder fields(bytes, printField);
        decode(fields);
    });
}

struct Place {
    const char* name;
    Bits bits;
    std::uint16_t value;
};

class FieldValue : public testing::TestWithParam<Place> {};

TEST_P(FieldValue, isReadFromItsBits) {
    const std::string output = printed({0x00, 0xB4, 0x5E, 0x01}, [](FieldDecoder& fields) {
        EXPECT_EQ(fields.add(ValueRow{GetParam().bits, line<"%d\n">}), GetParam().value);
    });
    EXPECT_EQ(output, std::to_string(GetParam().value) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Places, FieldValue,
    testing::Values(Place{"byte", Bits::byte(1), 0xB4},           //
                    Place{"topBit", Bits::bit(1, 7), 1},          //
                    Place{"bottomBit", Bits::bit(1, 0), 0},       //
                    Place{"topBits", Bits::range(1, 7, 5), 5},    //
                    Place{"bottomBits", Bits::range(1, 2, 0), 4}, //
                    Place{"bitsBetween", Bits::range(1, 5, 2), 13},
                    Place{"bigEndian", Bits::bigEndian(1), 0xB45E},
                    Place{"littleEndianWhole", Bits::littleEndian(1, 8), 0x5EB4},
                    Place{"littleEndianCut", Bits::littleEndian(1, 2), 0x2B4},
                    Place{"littleEndianAndABit", Bits::littleEndian(2, 1), 0x15E}),
    [](const auto& tested) { return tested.param.name; });

TEST(FieldDecoder, yieldsLinesOfEveryKindInOrder) {
    constexpr ValueRow values[] = {{Bits::byte(0), line<"a = %d\n">},
                                   {Bits::byte(1), line<"b = 0x%02X\n">}};
    constexpr UnitRow units[] = {{Bits::byte(0), line<"c%d = %d\n">},
                                 {Bits::byte(1), line<"d%d = %d\n">}};
    const std::string output = printed({1, 2, 'x', 'y', 0}, [&](FieldDecoder& fields) {
        fields.heading(line<"HEADING\n">);
        fields.heading(line<"UNIT %d\n">, 200);
        fields.add(values);
        fields.add(values, 1);
        fields.add(units, 9, 0);
        fields.add(TextRow{0, 3, line<"text = %s\n">}, 2);
    });
    EXPECT_EQ(output, "HEADING\n"
                      "UNIT 200\n"
                      "a = 1\n"
                      "b = 0x02\n"
                      "a = 2\n"
                      "b = 0x78\n"
                      "c9 = 1\n"
                      "d9 = 2\n"
                      "text = xy\n");
}

// Tries each way to run off the end of two bytes. The decoder yields nothing after that.
TEST(FieldDecoder, endsAtTheFirstIncompleteLine) {
    constexpr ValueRow last{Bits::byte(1), line<"last = %d\n">};
    const std::vector<void (*)(FieldDecoder&)> ends{
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::byte(2), line<"%d\n">}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::bigEndian(1), line<"%d\n">}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::littleEndian(1, 2), line<"%d\n">}), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(ValueRow{Bits::byte(0), line<"%d\n">}, 2), 0);
        },
        [](FieldDecoder& fields) {
            EXPECT_EQ(fields.add(UnitRow{Bits::byte(2), line<"%d %d\n">}, 1, 0), 0);
        },
        [](FieldDecoder& fields) {
            fields.add(TextRow{1, 2, line<"%s\n">});
        },
    };
    for (const auto& runOff : ends) {
        const std::string output = printed({1, 2}, [&](FieldDecoder& fields) {
            fields.add(last);
            runOff(fields);
            fields.heading(line<"no more\n">);
            fields.heading(line<"no more %d\n">, 1);
            EXPECT_EQ(fields.add(last), 0);
            EXPECT_EQ(fields.add(UnitRow{Bits::byte(0), line<"%d %d\n">}, 1, 0), 0);
            fields.add(TextRow{0, 1, line<"%s\n">});
        });
        EXPECT_EQ(output, "last = 2\n");
    }
}

} // namespace
} // namespace zolt::field_decoder_test
