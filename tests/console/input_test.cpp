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
    bool succeeds;
    Answer answer;
};

template <typename Answer, typename Reader>
void expectAnswers(Reader read, Answer before, std::initializer_list<Case<Answer>> cases) {
    for (const auto& each : cases) {
        Answer answer = before;
        bool succeeded = false;
        (void)outputOf([&] { succeeded = read(answer); }, each.input);
        EXPECT_EQ(succeeded, each.succeeds) << '"' << each.input << '"';
        EXPECT_EQ(answer, each.answer) << '"' << each.input << '"';
    }
}

TEST(ReadByte, keepsEightBits) {
    expectAnswers<std::int8_t>(readByte, 9,
                               {{"5\n", true, 5},
                                {"  \n\t 100", true, 100},
                                {"-1", true, -1},
                                {"255", true, -1},
                                {"256", true, 0},
                                {"265", true, 9},
                                {"+7", true, 7},
                                {"0x10", true, 0},
                                {"12abc", true, 12}});
}

TEST(ReadByte, failsOnTextThatIsNoNumber) {
    expectAnswers<std::int8_t>(readByte, 9, {{"x", false, 9}, {"\n;", false, 9}, {".5", false, 9}});
}

TEST(ReadByte, endOfInputKeepsTheAnswer) {
    expectAnswers<std::int8_t>(readByte, 9, {{"", true, 9}, {" \n", true, 9}});
}

TEST(ReadDecimal, reads32Bits) {
    expectAnswers<int>(readDecimal, -1,
                       {{"2147483647", true, 2147483647},
                        {"-2147483648", true, -2147483647 - 1},
                        {"a", false, -1},
                        {"", true, -1}});
}

TEST(ReadHexadecimal, takesAnOptionalPrefix) {
    expectAnswers<unsigned>(readHexadecimal, 7,
                            {{"50", true, 0x50},
                             {"0x1A", true, 0x1A},
                             {"ffffffff", true, 0xFFFFFFFF},
                             {"g", false, 7},
                             {"", true, 7}});
}

TEST(Reading, leavesTheRestOfTheLineToTheNextRead) {
    std::int8_t first = 0;
    std::int8_t second = 0;
    bool third = true;
    (void)outputOf(
        [&] {
            ASSERT_TRUE(readByte(first));
            ASSERT_TRUE(readByte(second));
            third = readByte(first);
        },
        "3 4x");
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 4);
    EXPECT_FALSE(third);
}

} // namespace
} // namespace zolt
