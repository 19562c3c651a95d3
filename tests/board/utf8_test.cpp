#include "board/utf8.h"

#include <gtest/gtest.h>

namespace board {
namespace {

TEST(Utf8, isTheShortestFormOfACharacter) {
    for (const char* const text : {"", "a", "\x7F", "\xC2\x80", "\xE0\xA0\x80", "\xEF\xBF\xBF",
                                   "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "a\xC3\xA4z"}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
    for (const char* const text :
         {"\x80", "\xC2", "\xC2z", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80",
          "\xE2\x82", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
        EXPECT_FALSE(isUtf8(text));
    }
}

TEST(Utf8, aTextStartsWithACharacterOrNot) {
    struct Start {
        std::string_view text;
        char32_t point;
        std::size_t length;
    };
    for (const Start& start :
         {Start{"", 0, 0}, Start{"ab", 'a', 1}, Start{"\xC3\xA4z", 0xE4, 2},
          Start{"\xE2\x82\xAC", 0x20AC, 3}, Start{"\xF0\x9F\x98\x80\xFF", 0x1F600, 4},
          Start{"\xFF\xC3\xA4", 0, 0}, Start{"\xC3", 0, 0}}) {
        const Character character = firstCharacter(start.text);
        EXPECT_EQ(character.point, start.point);
        EXPECT_EQ(character.length, start.length);
    }
}

} // namespace
} // namespace board
