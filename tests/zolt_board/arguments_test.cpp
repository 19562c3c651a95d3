#include "zolt_board/arguments.h"

#include "tests/support/argument_vector.h"
#include "zolt_board/verb.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zolt_board {
namespace {

using Words = std::vector<std::string>;

Arguments parsed(Words words) {
    words.insert(words.begin(), "zolt_board");
    return zolt::test::withArguments(std::move(words), parseArguments);
}

TEST(Arguments, aVerbTakesABoardAndOptionsInAnyOrder) {
    const Arguments plain = parsed({"show", "demo"});
    EXPECT_EQ(plain.verb->name, "show");
    EXPECT_EQ(plain.boards, Words({"demo"}));
    EXPECT_EQ(plain.colour, Colour::automatic);
    EXPECT_FALSE(plain.json || plain.tree || plain.help || plain.version);

    EXPECT_EQ(parsed({"show", "demo", "--color=never"}).colour, Colour::never);
    EXPECT_EQ(parsed({"show", "--color", "always", "demo"}).colour, Colour::always);
    EXPECT_EQ(parsed({"show", "--color=auto", "-"}).boards, Words({"-"}));
    EXPECT_EQ(parsed({"show", "--", "--color"}).boards, Words({"--color"}));
}

TEST(Arguments, nothingIsReadBehindHelpAndVersion) {
    EXPECT_EQ(parsed({"--help", "--nonsense"}).verb, nullptr);
    EXPECT_TRUE(parsed({"--help", "--nonsense"}).help);
    EXPECT_TRUE(parsed({"--version", "nonsense"}).version);
    EXPECT_EQ(parsed({"show", "--help", "--nonsense"}).verb->name, "show");
    EXPECT_TRUE(parsed({"show", "demo", "--version", "--nonsense"}).version);
}

struct Wrong {
    Words words;
    const char* reason;
};

class WrongArguments : public testing::TestWithParam<Wrong> {};

TEST_P(WrongArguments, areRefusedWithTheReason) {
    try {
        (void)parsed(GetParam().words);
        FAIL() << "accepted";
    } catch (const ArgumentsError& error) {
        EXPECT_STREQ(error.what(), GetParam().reason);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Every, WrongArguments,
    testing::Values(Wrong{{}, "there is no verb"},
                    Wrong{{"sohw", "demo"}, "there is no verb 'sohw'; did you mean 'show'?"},
                    Wrong{{"demo"}, "there is no verb 'demo'"}, Wrong{{""}, "there is no verb ''"},
                    Wrong{{"-"}, "there is no verb '-'"},
                    Wrong{{"a\x1B[31m"}, "there is no verb 'a\\x1B[31m'"},
                    Wrong{{"--hlep"}, "--hlep is not an option; did you mean '--help'?"},
                    Wrong{{"--color=never", "show"}, "--color is not an option"},
                    Wrong{{"show"}, "show needs a board"},
                    Wrong{{"show", "demo", "hostile"}, "show takes no board 'hostile'"},
                    Wrong{{"show", "--colour=never", "x"},
                          "--colour is not an option; did you mean '--color'?"},
                    Wrong{{"show", "-x", "demo"}, "-x is not an option"},
                    Wrong{{"show", "--help=x"}, "--help takes no value"},
                    Wrong{{"show", "--color"}, "--color needs a value"},
                    Wrong{{"show", "--color=red", "x"},
                          "--color 'red': is not auto, always or never"},
                    Wrong{{"show", "--color=", "x"}, "--color '': is not auto, always or never"}));

} // namespace
} // namespace zolt_board
