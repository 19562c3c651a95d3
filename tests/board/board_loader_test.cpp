#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

TEST(BoardLoader, emptyDescriptionIsAnEmptyBoard) {
    const Board board = test::boardOf("", "b");
    EXPECT_EQ(board.name, "");
    EXPECT_TRUE(board.slots.empty());
    EXPECT_EQ(board.halObjects.count("PICPWR_PAYLOADS"), 1U);
    EXPECT_FALSE(board.halObjects.at("PICPWR_PAYLOADS").interruptCallback);
}

TEST(BoardLoader, readsAWholeBoard) {
    const Board board = test::boardOf(R"(
name = "small"
faults = ["named-read PICPWR_1_* once", "raw-read 0x1000 status 4"]

[[slot]]
id = 63
dstat = 3
dbyp = true
dpen = true
apen = true
astat = true
module_class = 0x2A
module_class_index = 255
payload_offset = 0x1234
dsl_ids = [1, 0xFF]
payload = "01 2a FF"

[[slot]]
id = 1

[hal.PICPWR_PAYLOADS]
interrupt_callback = true
unregister_status = -3

[override.named]
PICPWR_1_DSTAT = 9
EMPTY = []
"1C_CARD_PRES" = "01"

[override.raw]
0x1000 = 0xE9
4099 = [0x34, 0x12]
)",
                                      "b");
    EXPECT_EQ(board.name, "small");
    ASSERT_EQ(board.slots.size(), 2U);
    const Slot& slot = board.slots[0];
    EXPECT_EQ(slot.id, 63);
    EXPECT_EQ(slot.dstat, 3);
    EXPECT_TRUE(slot.dbyp && slot.dpen && slot.apen && slot.astat);
    EXPECT_EQ(slot.moduleClass, 0x2A);
    EXPECT_EQ(slot.moduleClassIndex, 255);
    EXPECT_EQ(slot.payloadOffset, 0x1234);
    EXPECT_EQ(slot.dslIds, (std::array<std::uint8_t, 8>{1, 255}));
    EXPECT_EQ(slot.payload, (Bytes{0x01, 0x2A, 0xFF}));
    EXPECT_EQ(board.slots[1].dstat, 0);
    EXPECT_TRUE(board.halObjects.at("PICPWR_PAYLOADS").interruptCallback);
    EXPECT_EQ(board.halObjects.at("PICPWR_PAYLOADS").unregisterStatus, -3);
    EXPECT_EQ(board.namedOverrides,
              (std::map<std::string, Bytes>{
                  {"PICPWR_1_DSTAT", {9}}, {"EMPTY", {}}, {"1C_CARD_PRES", {1}}}));
    EXPECT_EQ(board.rawOverrides, (std::map<std::uint16_t, std::uint8_t>{
                                      {0x1000, 0xE9}, {0x1003, 0x34}, {0x1004, 0x12}}));
    EXPECT_EQ(board.faults, (std::vector{parseFaultRule("named-read PICPWR_1_* once"),
                                         parseFaultRule("raw-read 0x1000 status 4")}));
}

TEST(BoardLoader, refusesWithFileLineAndReason) {
    const std::pair<std::string, const char*> cases[] = {
        // kinds of values
        {"name = 7", "b.toml:1: board: 'name' must be a text"},
        {"faults = 7", "b.toml:1: board: 'faults' must be an array of texts"},
        {"faults = [\n'hal-object PICPWR_PAYLOADS',\n7]",
         "b.toml:3: board: 'faults' must be an array of texts"},
        {"slot = 7", "b.toml:1: board: 'slot' must be an array of tables, [[slot]]"},
        {"[slot]\nid = 1", "b.toml:1: board: 'slot' must be an array of tables, [[slot]]"},
        {"hal = 7", "b.toml:1: board: 'hal' must be a table, [hal]"},
        {"[[slot]]\nid = 1\ndbyp = 1", "b.toml:3: slot: 'dbyp' must be true or false"},
        {"[[slot]]\nid = '1'", "b.toml:2: slot: 'id' must be a whole number from 1 to 63"},
        {"[[slot]]\nid = 1.0", "b.toml:2: slot: 'id' must be a whole number from 1 to 63"},
        // ranges
        {"[[slot]]\nid = 0", "b.toml:2: slot: 'id' must be a whole number from 1 to 63"},
        {"[[slot]]\nid = 64", "b.toml:2: slot: 'id' must be a whole number from 1 to 63"},
        {"[[slot]]\nid = 1\ndstat = 4",
         "b.toml:3: slot: 'dstat' must be a whole number from 0 to 3"},
        {"[[slot]]\nid = 1\nmodule_class = 256",
         "b.toml:3: slot: 'module_class' must be a whole number from 0 to 255"},
        {"[[slot]]\nid = 1\npayload_offset = 0x10000",
         "b.toml:3: slot: 'payload_offset' must be a whole number from 0 to 65535"},
        {"[[slot]]\nid = 1\npayload = [1,\n256]",
         "b.toml:4: slot: 'payload' must be a whole number from 0 to 255"},
        {"[[slot]]\nid = 1\npayload = '01 0203'",
         "b.toml:3: slot: 'payload': '0203' is not a byte of two hexadecimal digits"},
        {"[[slot]]\nid = 1\npayload = '-1'",
         "b.toml:3: slot: 'payload': '-1' is not a byte of two hexadecimal digits"},
        {"[[slot]]\nid = 1\ndsl_ids = [1,2,3,4,5,6,7,8,9]",
         "b.toml:3: slot: 'dsl_ids' has more than 8 identifiers"},
        {"[hal.PICPWR_PAYLOADS]\nunregister_status = 2147483648",
         "b.toml:2: PICPWR_PAYLOADS: 'unregister_status' must be a whole number from -2147483648 "
         "to 2147483647"},
        // missing and unknown keys
        {"# a slot\n[[slot]]\ndstat = 3", "b.toml:2: slot: 'id' is missing"},
        {"nmae = 'x'", "b.toml:1: board: 'nmae' is not a key here; did you mean 'name'?"},
        {"[[slot]]\nid = 1\ndsatt = 3",
         "b.toml:3: slot: 'dsatt' is not a key here; did you mean 'dstat'?"},
        {"[[slot]]\nid = 1\ncolour = 3", "b.toml:3: slot: 'colour' is not a key here"},
        {"[hal.OTHER]", "b.toml:1: hal: 'OTHER' is not a key here"},
        {"[override.named]\nX = 1\n[override.rwa]\n",
         "b.toml:3: override: 'rwa' is not a key here; did you mean 'raw'?"},
        // contradictions
        {"[[slot]]\nid = 7\n\n[[slot]]\nid = 7",
         "b.toml:5: slot: 7 is described already, at line 2"},
        {"[[slot]]\nid = 1\npayload = '" + test::repeated("00 ", 248) + "'",
         "b.toml:3: slot: 'payload' has 248 bytes, at most 247 fit"},
        {"[[slot]]\nid = 1\nmodule = { type = 'bp', object = 'a' }\n"
         "[[slot]]\nid = 2\nmodule = { type = 'puck', object = 'a' }\n"
         "[[slot]]\nid = 3\n[slot.module]\ntype = 'bp'\nobject = 'a'",
         "b.toml:11: object: bp/a is described already, at line 3"},
        // overrides and faults
        {"[override.raw]\nx = 1", "b.toml:2: raw: 'x' is no raw address (0x0000 to 0xFFFF)"},
        {"[override.raw]\n0x10000 = 1",
         "b.toml:2: raw: '0x10000' is no raw address (0x0000 to 0xFFFF)"},
        {"[override.raw]\n0x1000 = 1\n4096 = 2",
         "b.toml:3: raw: 0x1000 is described already, at line 2"},
        {"[override.raw]\n0x2A02 = 1\n0x2A01 = [1, 2]",
         "b.toml:3: raw: 0x2A02 is described already, at line 2"},
        {"[override.raw]\n0xFFFF = [1, 2]", "b.toml:2: raw: the bytes at '0xFFFF' run past 0xFFFF"},
        {"[override.named]\nX = 1.5", "b.toml:2: named: 'X' must be a whole number from 0 to 255"},
        {"faults = [\n'raw-read x']",
         "b.toml:2: fault 'raw-read x': 'x' is not a raw address or a range of addresses "
         "(0x0000 to 0xFFFF)"},
        {"faults = [\n'bus absent',\n'hal-object NOPE']",
         "b.toml:3: fault 'hal-object NOPE': the HAL has no object 'NOPE'"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
}

TEST(BoardLoader, refusesNulInTexts) {
    const std::pair<std::string, const char*> cases[] = {
        {"name = \"a\\u0000b\"", "b.toml:1: board: 'name' has a NUL character"},
        {"faults = [\n\"named-read *\\u0000\"]", "b.toml:2: board: 'faults' has a NUL character"},
        {"[override.named]\n\"A\\u0000\" = 1", "b.toml:2: named: 'A\\x00' has a NUL character"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
}

TEST(BoardLoader, acceptsNulInTheRiserMap) {
    const Board board = test::boardOf("[[riser_map.record]]\nlocation = \"A\\u0000B\"", "b");
    EXPECT_EQ(board.riserMap[61], 'A');
    EXPECT_EQ(board.riserMap[62], 0);
    EXPECT_EQ(board.riserMap[63], 'B');
}

// The dump of the tool, with its header, pastes into a text.
TEST(BoardLoader, readsBytesFromADump) {
    const Board board = test::boardOf(R"(
[[slot]]
id = 1
payload = """

+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F
--------------------------------------------------------------
0x00002a01 = 01 2a 03 04 05 06 07 08 : 09 0a 0b 0c 0d 0e 0f 10 
0x00002a11 = ff 12 

"""
)",
                                      "b");
    EXPECT_EQ(board.slots[0].payload,
              (Bytes{1, 0x2A, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0xFF, 0x12}));
    const std::pair<const char*, const char*> cases[] = {
        {"0x00002a01 01", "'0x00002a01'"}, {"0x = 01", "'0x'"},  {"01 = 02", "'='"},
        {"0x12 = 0x13 = 1", "'0x13'"},     {"01:02", "'01:02'"}, {"-- 01", "'--'"},
    };
    for (const auto& [bytes, wrong] : cases) {
        EXPECT_EQ(test::refusalOf(std::string("[[slot]]\nid = 1\npayload = '") + bytes + "'"),
                  std::string("b.toml:3: slot: 'payload': ") + wrong +
                      " is not a byte of two hexadecimal digits");
    }
}

TEST(BoardLoader, collectsTheErrorsOfAllTables) {
    using Errors = std::vector<std::string>;
    EXPECT_EQ(errorsIn("[[slot]]\nid = 1", "b"), Errors());
    EXPECT_EQ(errorsIn(R"(name = 7
colour = 1
faults = ["bus present", "raw-read 1", "hal-object NOPE"]
[[slot]]
id = 64
dstat = 9
[[slot]]
id = 2
[slot.module]
xwires = 16
[[slot]]
id = 2
color = 1
dsatt = 1
[riser_map]
config_major = 256
[[i2c.bus]]
number = 1
[[i2c.bus.device]]
address = 0
[[i2c.bus.device]]
address = 1
)",
                       "b"),
              (Errors{
                  "b:1: board: 'name' must be a text",
                  "b:5: slot: 'id' must be a whole number from 1 to 63",
                  "b:10: module: 'xwires' must be a whole number from 0 to 15",
                  "b:12: slot: 2 is described already, at line 8",
                  "b:16: riser_map: 'config_major' must be a whole number from 0 to 255",
                  "b:20: device: 'address' must be a whole number from 1 to 127",
                  "b:21: device: needs 'memory', 'size' or 'node_type'",
                  "b:3: fault 'bus present': 'present' is not understood here, only 'absent' is",
                  "b:3: fault 'hal-object NOPE': the HAL has no object 'NOPE'",
                  "b:2: board: 'colour' is not a key here",
              }));
    EXPECT_EQ(errorsIn("[[slot]]\nid = 2\ncolor = 1\ndsatt = 1", "b"),
              (Errors{"b:3: slot: 'color' is not a key here",
                      "b:4: slot: 'dsatt' is not a key here; did you mean 'dstat'?"}));
    EXPECT_EQ(errorsIn("a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a.a = 1", "b"),
              Errors{"b:1: a key has more than 16 parts"});
    EXPECT_EQ(errorsIn(test::repeated("[[slot]]\n", 200), "b").size(), 100U);
}

TEST(BoardLoader, showsNoControlCharactersInMessages) {
    const std::string escape = "\x1B[31m";
    EXPECT_EQ(test::refusalOf("nmae = 1", "b" + escape + "\n.toml"),
              "b\\x1B[31m\\n.toml:1: board: 'nmae' is not a key here; did you mean 'name'?");
    const std::pair<std::string, const char*> cases[] = {
        {"\"\\u001B[2J\" = 1", "b.toml:1: board: '\\x1B[2J' is not a key here"},
        {"[[slot]]\nid = 1\nmodule = { type = \"\\u0007\", object = 'x' }",
         "b.toml:3: module: '\\x07' is not a module type"},
        {"[[slot]]\nid = 1\npayload = \"\\u001B\"",
         "b.toml:3: slot: 'payload': '\\x1B' is not a byte of two hexadecimal digits"},
        {"faults = [\"bus \\u001B\"]",
         "b.toml:1: fault 'bus \\x1B': '\\x1B' is not understood here, only 'absent' is"},
        {"[i2c.bus.\"\\u009B\"]", "b.toml:1: i2c: 'bus' must be an array of tables, [[bus]]"},
        {"[service.info]\n\"\\u009B\" = 1", "b.toml:2: '\\xC2\\x9B' is no property name of D-Bus"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
    // The parser quotes the text in its own messages.
    const std::string refusal =
        test::refusalOf("a = 1\n\"\\u001B" + std::string(5000, 'x') + "\" = 1\n\"\\u001B" +
                        std::string(5000, 'x') + "\" = 1\n");
    EXPECT_EQ(refusal.find('\x1B'), std::string::npos) << refusal;
    EXPECT_LT(refusal.size(), 300U);
}

// The message for invalid TOML is the place, followed by the parser's own words.
TEST(BoardLoader, refusesInvalidToml) {
    const std::pair<const char*, const char*> cases[] = {
        {"name = \n", "b.toml:1: Error while parsing"},
        {"\n\n[[slot]\n", "b.toml:3: Error while parsing"},
        {"name = 'a'\nname = 'b'", "b.toml:2: Error while parsing"},
    };
    for (const auto& [description, start] : cases) {
        const std::string refusal = test::refusalOf(description);
        EXPECT_TRUE(refusal.starts_with(start)) << refusal;
    }
}

TEST(BoardLoader, acceptsValuesAtTheLimits) {
    const Board board = test::boardOf("[[slot]]\nid = 1\npayload = '" + test::repeated("FF ", 247) +
                                          "'\n[[slot]]\nid = 2\npayload_offset = 24573\n"
                                          "payload = [1, 2]\n[override.raw]\n0xFFFE = [1, 2]\n",
                                      "b");
    EXPECT_EQ(board.slots[0].payload.size(), 247U);
    EXPECT_EQ(board.slots[1].payloadOffset, 24573);
    EXPECT_EQ(board.rawOverrides.at(0xFFFF), 2);
}

} // namespace
} // namespace board
