#include "board/message_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace board {
namespace {

TEST(MessageText, escapesControlCharactersAndBrokenUtf8) {
    const std::pair<std::string, const char*> cases[] = {
        {"plain text, \\ and 'quotes'", "plain text, \\ and 'quotes'"},
        {"a\nb\rc\td", "a\\nb\\rc\\td"},
        {"\x1B[31mred", "\\x1B[31mred"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"\x7F", "\\x7F"},
        {"\xC2\x9B"
         "31m",
         "\\xC2\\x9B31m"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"\xC3", "\\xC3"},
        {"\x9B"
         "1m",
         "\\x9B1m"},
        {"\xE2\x82z", "\\xE2\\x82z"},
        {"\xFF", "\\xFF"},
        {"\xC0\x80", "\\xC0\\x80"},                   // longer than needed
        {"\xE0\x82\x9B", "\\xE0\\x82\\x9B"},          // the same of U+009B
        {"\xED\xA0\x80", "\\xED\\xA0\\x80"},          // a surrogate
        {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"}, // beyond the last character
        {"a\xE2\x80\xAEz", "a\\xE2\\x80\\xAEz"},      // right-to-left override
        {"\xE2\x81\xA6", "\\xE2\\x81\\xA6"},          // an isolate
        {"\xD8\x9C", "\\xD8\\x9C"},
        {"\xE2\x80\xA8", "\\xE2\\x80\\xA8"}, // end of line
        {"\xE2\x80\xA7 \xE2\x80\xAF", "\xE2\x80\xA7 \xE2\x80\xAF"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(printable(text), expected);
        EXPECT_EQ(printable(printable(text)), expected);
    }
}

TEST(MessageText, writesAllBeyondAsciiAsEscapes) {
    EXPECT_EQ(asciiOnly("plain\n"), "plain\n");
    EXPECT_EQ(asciiOnly("\xC3\xA9"), "\\xC3\\xA9");
}

TEST(MessageText, cutsALongTextBetweenCharacters) {
    EXPECT_EQ(inQuotes(std::string(200, 'a')), "'" + std::string(200, 'a') + "'");
    EXPECT_EQ(inQuotes(std::string(201, 'a')), "'" + std::string(200, 'a') + "...'");
    EXPECT_EQ(shortened(std::string(199, 'a') + "\xC3\xA9"), std::string(199, 'a') + "...");
}

TEST(MessageText, suggestsTheMostSimilarWords) {
    const std::vector<std::string> words{"name", "fame", "faults", "slot", "a", "b", "c", "d"};
    EXPECT_EQ(suggestion("nmae", words), "; did you mean 'name'?");
    EXPECT_EQ(suggestion("dame", words), "; did you mean 'name' or 'fame'?");
    EXPECT_EQ(suggestion("fault", words), "; did you mean 'faults'?");
    EXPECT_EQ(suggestion("SLOT", words), "; did you mean 'slot'?");
    EXPECT_EQ(suggestion("x", words), ""); // no letter in common
    EXPECT_EQ(suggestion("", words), "");
    EXPECT_EQ(suggestion("ax", std::vector<std::string>{"ab", "ac", "ad", "ae"}),
              "; did you mean 'ab' or 'ac' or 'ad'?");
    EXPECT_EQ(suggestion("colour", words), "");
    EXPECT_EQ(suggestion(std::string(5'000'000, 'n'), words), "");
}

} // namespace
} // namespace board
