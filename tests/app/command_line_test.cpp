#include "app/command_line.h"

#include "tests/support/argument_vector.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zolt {
namespace {

CommandLine parse(std::vector<std::string> words) {
    words.insert(words.begin(), "zolt_test");
    return test::withArguments(std::move(words), parseCommandLine);
}

// Every field, in the order of the letters o p d m f i n t.
std::string fields(const CommandLine& line) {
    std::string text;
    for (const std::int64_t number :
         {std::int64_t{line.arguments.option}, std::int64_t{line.arguments.picpwrId},
          std::int64_t{line.arguments.deviceType}, std::int64_t{line.arguments.moduleSelector},
          std::int64_t{line.arguments.format}, std::int64_t{line.index},
          std::int64_t{line.parentBus}, std::int64_t{line.targetAddress}}) {
        text += std::to_string(number) + " ";
    }
    return text;
}

TEST(CommandLine, defaults) {
    EXPECT_EQ(fields(parse({})), "0 0 0 0 0 0 -1 0 ");
}

TEST(CommandLine, everyLetterSetsItsField) {
    EXPECT_EQ(fields(parse({"-o", "1", "-p", "2", "-d", "3", "-m", "4", "-f", "5", "-i", "6", "-n",
                            "7", "-t", "8"})),
              "1 2 3 4 5 6 7 8 ");
}

TEST(CommandLine, numbersAreCutToTheWidthOfTheirField) {
    EXPECT_EQ(fields(parse({"-o265", "-p257", "-d511", "-m-1", "-f256", "-i300", "-n2147483647",
                            "-t4294967295"})),
              "9 1 255 255 0 44 2147483647 4294967295 ");
    EXPECT_EQ(fields(parse({"-n", "-2147483648", "-t", "-1"})),
              "0 0 0 0 0 0 -2147483648 4294967295 ");
    EXPECT_EQ(fields(parse({"-n4294967295", "-t4294967296"})), "0 0 0 0 0 0 -1 0 ");
}

TEST(CommandLine, numbersBeyondALongCountAsTheNearestLong) {
    EXPECT_EQ(fields(parse({"-o", "99999999999999999999", "-n", "99999999999999999999"})),
              "255 0 0 0 0 0 -1 0 ");
}

TEST(CommandLine, textCountsAsTheNumberItStartsWithOrAsZero) {
    EXPECT_EQ(fields(parse({"-o", "one", "-p", "", "-n", "x", "-t", "0x50"})), "0 0 0 0 0 0 0 0 ");
    EXPECT_EQ(fields(parse({"-o", "5th", "-p", " 7"})), "5 7 0 0 0 0 -1 0 ");
}

TEST(CommandLine, lastOfSeveralRepetitionsWins) {
    EXPECT_EQ(fields(parse({"-o", "1", "-o", "2", "-n5", "-n6"})), "2 0 0 0 0 0 6 0 ");
}

TEST(CommandLine, unknownLettersAndMissingNumbersAreIgnored) {
    EXPECT_EQ(fields(parse({"-x", "-o", "1", "-z5", "-p"})), "1 0 0 0 0 0 -1 0 ");
}

TEST(CommandLine, wordsBetweenOptionsAreSkipped) {
    EXPECT_EQ(fields(parse({"word", "-o", "1", "word", "-p", "2"})), "1 2 0 0 0 0 -1 0 ");
    EXPECT_EQ(fields(parse({"--", "-o", "1"})), "0 0 0 0 0 0 -1 0 ");
}

} // namespace
} // namespace zolt
