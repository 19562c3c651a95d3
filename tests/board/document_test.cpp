#include "board/document.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace board {
namespace {

TEST(Document, keepsTheOrderOfKeysAndTables) {
    DocumentTable root;
    root.comment("A board.");
    root.comment("");
    root.set("name", "demo");
    root.setRows("karn",
                 {{{"id", WrittenNumber{1}}, {"fru_wp", true}}, {{"id", WrittenNumber{2}}}});
    root.setRows("remote_fan", {{{"picpwr_index", WrittenNumber{0x81, 2}}}});
    DocumentTable& slot = root.append("slot");
    slot.comment("the first slot");
    slot.set("id", WrittenNumber{1});
    slot.table("module").set("device_id", WrittenNumber{0xB01, 4});
    slot.table("module").append("oem").set("type", WrittenNumber{3});
    slot.table("module").append("oem").set("type", WrittenNumber{2});
    root.append("slot").set("id", WrittenNumber{2});
    root.table("override").table("raw").set("0x1000", WrittenNumber{0xE9, 2});
    root.table("override").table("named").set("4C+_X", Bytes{1, 0x2A});
    EXPECT_EQ(root.toml(), R"(# A board.
#

name = "demo"
karn = [
    { id = 1, fru_wp = true },
    { id = 2 },
]
remote_fan = [{ picpwr_index = 0x81 }]

# the first slot
[[slot]]
id = 1
[slot.module]
device_id = 0x0B01
[[slot.module.oem]]
type = 3
[[slot.module.oem]]
type = 2

[[slot]]
id = 2

[override.raw]
0x1000 = 0xE9

[override.named]
"4C+_X" = "01 2A"
)");
}

TEST(Document, writesEveryKindOfValue) {
    struct Case {
        WrittenValue value;
        const char* text;
    };
    const Case cases[] = {
        {true, "true"},
        {false, "false"},
        {WrittenNumber{0}, "0"},
        {WrittenNumber{-5, 4}, "-5"},
        {WrittenNumber{0x12345, 2}, "0x12345"},
        {WrittenNumber{std::numeric_limits<std::int64_t>::min()}, "-9223372036854775808"},
        {1.0, "1.0"},
        {0.1, "0.1"},
        {1e300, "1e+300"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::nan(""), "nan"},
        {"", "\"\""},
        {"a\"b\\c\n\x1B\x7F\xC3\xA4", "\"a\\\"b\\\\c\\u000A\\u001B\\u007F\xC3\xA4\""},
        {std::string(1, '\0'), "\"\\u0000\""},
        {Bytes{}, "[]"},
        {Bytes{0, 255}, "\"00 FF\""},
        {Bytes(17, 1), "\"\"\"\n    01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01\n    01\"\"\""},
        {WrittenList{}, "[]"},
        {WrittenList{WrittenNumber{1}, "x", WrittenList{true}}, "[1, \"x\", [true]]"},
        {WrittenRow{}, "{}"},
        {WrittenRow{{"signature", "y"}, {"value", WrittenNumber{1}}},
         "{ signature = \"y\", value = 1 }"},
        {WrittenList{std::string(50, 'a'), std::string(50, 'b')},
         "[\n    \"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\",\n"
         "    \"bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb\",\n]"},
    };
    for (const Case& written : cases) {
        DocumentTable root;
        root.set("k", written.value);
        EXPECT_EQ(root.toml(), std::string("k = ") + written.text + "\n");
    }
}

} // namespace
} // namespace board
