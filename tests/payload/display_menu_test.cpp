#include "payload/display_menu.h"

#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt::display_menu_test {
namespace {

using test::outputOf;

const std::string menu = "1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n";

struct Dialogue {
    Status status = -1;
    std::string output;
};

// Runs the menu on a view that prints each choice.
Dialogue dialogue(std::uint8_t format, std::string_view input) {
    Dialogue held;
    held.output = outputOf(
        [&] {
            held.status = showByChoice(format, [](std::int8_t choice) { print<"[%d]\n">(choice); });
        },
        input);
    return held;
}

TEST(DisplayMenu, asksUntilTheOperatorGoesBack) {
    const auto held = dialogue(0, "1 2\n9\n-1\n3\n1\n");
    EXPECT_EQ(held.output,
              menu + "[1]\n" + menu + "[2]\n" + menu + "[9]\n" + menu + "[-1]\n" + menu + "[3]\n");
    EXPECT_EQ(held.status, statusDone);
}

TEST(DisplayMenu, choicesAreCutToEightBits) {
    const auto held = dialogue(0, "258\n259\n");
    EXPECT_EQ(held.output, menu + "[2]\n" + menu + "[3]\n");
    EXPECT_EQ(held.status, statusDone);
}

TEST(DisplayMenu, aChoiceThatIsNoNumberEndsTheMenu) {
    const auto held = dialogue(0, "2 x");
    EXPECT_EQ(held.output, menu + "[2]\n" + menu + "scanf error\n");
    EXPECT_EQ(held.status, statusNothingToShow);
}

TEST(DisplayMenu, aGivenFormatIsShownOnceWithoutAMenu) {
    for (const int format : {1, 2, 3, 4, 127}) {
        const auto held = dialogue(static_cast<std::uint8_t>(format), "1\n");
        EXPECT_EQ(held.output, "[" + std::to_string(format) + "]\n");
        EXPECT_EQ(held.status, statusDone);
    }
    EXPECT_EQ(dialogue(200, "").output, "[-56]\n");
}

TEST(DisplayMenu, theEndOfInputEndsItAsAChoiceThatIsNoNumberDoes) {
    const auto atOnce = dialogue(0, "");
    EXPECT_EQ(atOnce.output, menu + "scanf error\n");
    EXPECT_EQ(atOnce.status, statusNothingToShow);
    const auto later = dialogue(0, "1\n");
    EXPECT_EQ(later.output, menu + "[1]\n" + menu + "scanf error\n");
    EXPECT_EQ(later.status, statusNothingToShow);
}

class Displays : public testing::Test {
protected:
    [[nodiscard]] std::string shown(std::int8_t choice, std::size_t length) const {
        const Display display{
            .bytes = bytes_,
            .dumpLength = length,
            .dumpAddress = 0xFFFFFFFF,
            .decode = [](std::span<const std::uint8_t> bytes, TakeField take) {
                take(Value{line<"bytes = %d\n">, static_cast<std::uint16_t>(bytes.size())});
            }};
        return outputOf([&] { show(display, choice); });
    }

private:
    std::vector<std::uint8_t> bytes_{1, 2, 3};
};

const std::string dumpHeader = "\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
                               "--------------------------------------------------------------\n";

TEST_F(Displays, dumpTheGivenLengthUpToTheirLastByte) {
    EXPECT_EQ(shown(1, 0), dumpHeader + "\n\n");
    EXPECT_EQ(shown(1, 2), dumpHeader + "0xffffffff = 01 02 \n\n");
    EXPECT_EQ(shown(1, 4), dumpHeader + "0xffffffff = 01 02 03 \n\n");
}

TEST_F(Displays, decodeAllTheirBytes) {
    EXPECT_EQ(shown(2, 0), "bytes = 3\n");
}

TEST_F(Displays, showNothingForGoBack) {
    EXPECT_EQ(shown(3, 3), "");
}

TEST_F(Displays, rejectEveryOtherChoice) {
    for (const int choice : {0, 4, 127, -1, -128}) {
        EXPECT_EQ(shown(static_cast<std::int8_t>(choice), 3), "Invalid option entered\n");
    }
}

} // namespace
} // namespace zolt::display_menu_test
