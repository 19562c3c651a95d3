#include "console/output.h"

#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace zolt {
namespace {

using test::outputOf;

TEST(Print, writesTextUnchanged) {
    EXPECT_EQ(outputOf([] { print<"Exit \n">(); }), "Exit \n");
    EXPECT_EQ(outputOf([] { print<"">(); }), "");
}

TEST(Print, decimalNumbersOfAnyType) {
    EXPECT_EQ(outputOf([] { print<"%d,%d,%d">(std::uint8_t{255}, std::int8_t{-1}, 0); }),
              "255,-1,0");
    EXPECT_EQ(outputOf([] { print<"%d|%d">(LLONG_MIN, LLONG_MAX); }),
              "-9223372036854775808|9223372036854775807");
}

TEST(Print, widthIsFilledWithZerosAndNeverCuts) {
    EXPECT_EQ(outputOf([] { print<"%02d %02d %02d %02d">(5, 63, 255, -1); }), "05 63 255 -1");
    EXPECT_EQ(outputOf([] { print<"%09d">(42); }), "000000042");
    EXPECT_EQ(outputOf([] { print<"%03d">(-7); }), "-07");
}

TEST(Print, hexadecimalNumbers) {
    EXPECT_EQ(outputOf([] { print<"0x%02X 0x%02X 0x%X 0x%04x">(5, 0xABCD, 0xAB, 0xab); }),
              "0x05 0xABCD 0xAB 0x00ab");
}

TEST(Print, strings) {
    EXPECT_EQ(outputOf([] { print<"%s: %s\n">(std::string("name"), std::string_view("")); }),
              "name: \n");
}

TEST(Print, conversionsInArgumentsArePlainText) {
    EXPECT_EQ(outputOf([] { print<"%s%d">(std::string_view("%d%s%"), 1); }), "%d%s%1");
}

// The texts are longer than the room that a line reserves for an argument.
TEST(Print, longTextsArePrintedWhole) {
    for (const std::size_t length : {230U, 250U, 255U, 256U, 257U, 512U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(outputOf([&] { print<"a%sb%dc">(text, 12345); }), "a" + text + "b12345c");
        EXPECT_EQ(outputOf([&] { print<"%s%s%s">(text, text, text); }),
                  std::string(3 * length, 'x'));
    }
}

TEST(Print, linesAreHandedOutTogether) {
    EXPECT_EQ(outputOf([] {
                  print<"%s %d\n">("line", 1);
                  print<"%s %d\n">("line", 2);
                  EXPECT_EQ(test::handedOut(), "");
              }),
              "line 1\nline 2\n");
}

// Lines of each length stand at the end of the buffer once.
TEST(Print, moreTextThanTheBufferHasArrivesWhole) {
    const std::string word(60, 'w');
    std::string expected;
    const std::string printed = outputOf([&] {
        for (std::size_t i = 0; i < 20000; ++i) {
            const std::string_view part = std::string_view(word).substr(i % word.size());
            print<"%d %s\n">(i, part);
            expected.append(std::to_string(i)).append(" ").append(part).append("\n");
        }
    });
    EXPECT_EQ(printed.size(), expected.size());
    EXPECT_TRUE(printed == expected);
}

TEST(Write, keepsNulBytes) {
    EXPECT_EQ(outputOf([] { write(std::string_view("a\0b", 3)); }), std::string("a\0b", 3));
}

} // namespace
} // namespace zolt
