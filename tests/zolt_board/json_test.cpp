#include "zolt_board/json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace zolt_board {
namespace {

using namespace std::string_literals;

TEST(JsonOfBoards, bytesAreHexadecimalDigits) {
    EXPECT_EQ(bytesToJson(board::Bytes{}).dump(), R"("")");
    EXPECT_EQ(bytesToJson(board::Bytes{0x00, 0x0A, 0xFF}).dump(), R"("000AFF")");
}

TEST(JsonOfBoards, textsKeepTheirBytesWhateverTheyAre) {
    EXPECT_EQ(textToJson("").dump(), R"({"text":"","bytes":""})");
    EXPECT_EQ(textToJson("Größe"s).dump(), R"({"text":"Größe","bytes":"4772C3B6C39F65"})");
    EXPECT_EQ(textToJson("a\0b"s).dump(), R"({"text":"a\u0000b","bytes":"610062"})");
    for (const char* const text :
         {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_FALSE(textToJson(text).contains("text")) << text;
    }
    EXPECT_EQ(textToJson("\xFF!").dump(), R"({"bytes":"FF21"})");
}

TEST(JsonOfBoards, valuesFollowTheirTypes) {
    EXPECT_EQ(valueToJson("b", true).dump(), "true");
    EXPECT_EQ(valueToJson("y", 255).dump(), "255");
    EXPECT_EQ(valueToJson("n", -32768).dump(), "-32768");
    EXPECT_EQ(valueToJson("q", 65535).dump(), "65535");
    EXPECT_EQ(valueToJson("i", -5).dump(), "-5");
    EXPECT_EQ(valueToJson("u", std::int64_t{4294967295}).dump(), "4294967295");
    EXPECT_EQ(valueToJson("x", std::numeric_limits<std::int64_t>::min()).dump(),
              "-9223372036854775808");
    EXPECT_EQ(valueToJson("t", -1).dump(), "18446744073709551615");
    EXPECT_EQ(valueToJson("d", 0.5).dump(), "0.5");
    EXPECT_EQ(valueToJson("d", std::numeric_limits<double>::quiet_NaN()).dump(), R"("nan")");
    EXPECT_EQ(valueToJson("d", std::numeric_limits<double>::infinity()).dump(), R"("inf")");
    EXPECT_EQ(valueToJson("d", -std::numeric_limits<double>::infinity()).dump(), R"("-inf")");
    EXPECT_EQ(valueToJson("s", "text").dump(), R"("text")");
    EXPECT_EQ(valueToJson("o", "/a/b").dump(), R"("/a/b")");
    EXPECT_EQ(valueToJson("as", board::listOf()).dump(), "[]");
    EXPECT_EQ(valueToJson("(ys)", board::listOf(1, "two")).dump(), R"([1,"two"])");
    EXPECT_EQ(
        valueToJson("a{sv}", board::listOf(board::listOf("key", board::listOf("y", 7)))).dump(),
        R"([["key",{"signature":"y","value":7}]])");
    EXPECT_EQ(valueToJson("v", board::listOf("v", board::listOf("ay", board::listOf(1, 2)))).dump(),
              R"({"signature":"v","value":{"signature":"ay","value":[1,2]}})");
}

TEST(JsonOfBoards, documentsAreAsciiWithoutControlCharacters) {
    Json document = reportOf("show");
    document["text"] = "\x1B[31m\x7F\xC2\x9B\xE2\x80\xAEü\n\"";
    EXPECT_EQ(documentText(document), R"({
  "report": "show",
  "version": 1,
  "text": "\u001b[31m\u007f\u009b\u202e\u00fc\n\""
}
)");
}

TEST(JsonOfBoards, aDocumentIsValidWithATextThatIsNoUtf8) {
    EXPECT_EQ(documentText(Json("a\xFFz")), "\"a\\ufffdz\"\n");
}

} // namespace
} // namespace zolt_board
