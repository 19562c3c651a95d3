#include "console/number_text.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <string>

namespace zolt {
namespace {

// Returns what a function appends. Behind its end nothing may change.
template <typename Append>
std::string appended(Append append) {
    std::string text(2 * longestNumber, '#');
    const auto length = static_cast<std::size_t>(append(text.data()) - text.data());
    EXPECT_EQ(text.substr(length), std::string(text.size() - length, '#'));
    text.resize(length);
    return text;
}

std::string decimal(long long number, unsigned width = 0) {
    return appended([&](char* end) { return appendDecimal(end, number, width); });
}

std::string hexadecimal(unsigned long long number, unsigned width) {
    return appended(
        [&](char* end) { return appendHexadecimal(end, number, width, "0123456789ABCDEF"); });
}

// printf defines the expected texts.
std::string printedDecimal(long long number, unsigned width) {
    std::array<char, 32> text;
    (void)std::snprintf(text.data(), text.size(), "%0*lld", static_cast<int>(width), number);
    return text.data();
}

std::string printedHexadecimal(unsigned long long number, unsigned width) {
    std::array<char, 32> text;
    (void)std::snprintf(text.data(), text.size(), "%0*llX", static_cast<int>(width), number);
    return text.data();
}

constexpr long long edges[] = {
    0,         1,     9,      10,        11,         99,         100,
    101,       199,   255,    256,       999,        1000,       9999,
    10000,     65535, 999999, 999999999, 1000000000, 4294967295, LLONG_MAX - 1,
    LLONG_MAX,
};

TEST(NumberText, decimalsMatchPrintf) {
    for (const long long edge : edges) {
        for (const long long number : {edge, -edge, -edge - 1}) {
            for (unsigned width = 1; width <= 9; ++width) {
                EXPECT_EQ(decimal(number, width), printedDecimal(number, width)) << width;
            }
            EXPECT_EQ(decimal(number), std::to_string(number));
        }
    }
    for (int number = -1100; number <= 1100; ++number) {
        EXPECT_EQ(decimal(number), std::to_string(number));
        EXPECT_EQ(decimal(number, 2), printedDecimal(number, 2));
    }
}

TEST(NumberText, hexadecimalsMatchPrintf) {
    for (const long long edge : edges) {
        for (const long long signedNumber : {edge, -edge, edge / 16}) {
            const auto number = static_cast<unsigned long long>(signedNumber);
            for (unsigned width = 1; width <= 9; ++width) {
                EXPECT_EQ(hexadecimal(number, width), printedHexadecimal(number, width)) << width;
            }
        }
    }
}

TEST(NumberText, zeroHasADigitWithoutAWidthToo) {
    EXPECT_EQ(hexadecimal(0, 0), "0");
    EXPECT_EQ(decimal(0, 0), "0");
}

TEST(NumberText, lowestLongLongHasTheLengthOfTheLongestNumber) {
    EXPECT_EQ(decimal(LLONG_MIN).size(), longestNumber);
    EXPECT_EQ(decimal(LLONG_MIN), "-9223372036854775808");
}

} // namespace
} // namespace zolt
