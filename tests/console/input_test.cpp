#include "console/input.h"

#include "console/output.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <optional>

namespace zolt {
namespace {

using test::outputOf;

// An input, the result of the reader on it, and the answer variable's value afterwards.
template <typename Answer>
struct Case {
    const char* input;
    Reading result;
    Answer answer;
};

// A reader hands out the prompt before it waits for the answer.
template <typename Answer, typename Reader>
void expectAnswers(Reader read, Answer before, std::initializer_list<Case<Answer>> cases) {
    for (const auto& each : cases) {
        Answer answer = before;
        auto result = static_cast<Reading>(0xFF);
        (void)outputOf(
            [&] {
                write("prompt :");
                result = read(answer);
                EXPECT_EQ(test::handedOut(), "prompt :");
            },
            each.input);
        EXPECT_EQ(result, each.result) << '"' << each.input << '"';
        EXPECT_EQ(answer, each.answer) << '"' << each.input << '"';
    }
}

TEST(ReadByte, keepsEightBits) {
    expectAnswers<std::int8_t>(readByte, 9,
                               {{"5\n", Reading::number, 5},
                                {"  \n\t 100", Reading::number, 100},
                                {"-1", Reading::number, -1},
                                {"255", Reading::number, -1},
                                {"256", Reading::number, 0},
                                {"265", Reading::number, 9},
                                {"+7", Reading::number, 7},
                                {"0x10", Reading::number, 0},
                                {"12abc", Reading::number, 12}});
}

TEST(ReadByte, failsOnTextThatIsNoNumber) {
    expectAnswers<std::int8_t>(readByte, 9,
                               {{"x", Reading::notANumber, 9},
                                {"\n;", Reading::notANumber, 9},
                                {".5", Reading::notANumber, 9}});
}

TEST(ReadByte, endOfInputKeepsTheAnswer) {
    expectAnswers<std::int8_t>(readByte, 9,
                               {{"", Reading::endOfInput, 9}, {" \n", Reading::endOfInput, 9}});
}

TEST(ReadDecimal, reads32Bits) {
    expectAnswers<int>(readDecimal, -1,
                       {{"2147483647", Reading::number, 2147483647},
                        {"-2147483648", Reading::number, -2147483647 - 1},
                        {"a", Reading::notANumber, -1},
                        {"", Reading::endOfInput, -1}});
}

TEST(ReadHexadecimal, takesAnOptionalPrefix) {
    expectAnswers<unsigned>(readHexadecimal, 7,
                            {{"50", Reading::number, 0x50},
                             {"0x1A", Reading::number, 0x1A},
                             {"ffffffff", Reading::number, 0xFFFFFFFF},
                             {"g", Reading::notANumber, 7},
                             {"", Reading::endOfInput, 7}});
}

TEST(Reading, leavesTheRestOfTheLineToTheNextRead) {
    std::int8_t first = 0;
    std::int8_t second = 0;
    auto third = Reading::number;
    (void)outputOf(
        [&] {
            ASSERT_EQ(readByte(first), Reading::number);
            ASSERT_EQ(readByte(second), Reading::number);
            third = readByte(first);
        },
        "3 4x");
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 4);
    EXPECT_EQ(third, Reading::notANumber);
}

// The character behind a number stays unread, so that the next read meets it.
template <typename Answer, typename Reader>
Reading secondReading(Reader read) {
    Answer answer = 0;
    auto second = Reading::number;
    (void)outputOf(
        [&] {
            EXPECT_EQ(read(answer), Reading::number);
            second = read(answer);
        },
        "5X");
    return second;
}

TEST(Reading, endsBehindTheNumber) {
    EXPECT_EQ(secondReading<std::int8_t>(readByte), Reading::notANumber);
    EXPECT_EQ(secondReading<int>(readDecimal), Reading::notANumber);
    EXPECT_EQ(secondReading<unsigned>(readHexadecimal), Reading::notANumber);
}

} // namespace
} // namespace zolt
