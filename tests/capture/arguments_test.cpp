#include "capture/arguments.h"

#include "capture/date.h"
#include "tests/support/argument_vector.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace capture {
namespace {

Arguments parsed(std::vector<std::string> words) {
    words.insert(words.begin(), "zolt_capture");
    return zolt::test::withArguments(std::move(words), parseArguments);
}

TEST(Arguments, noneIsACaptureToStandardOutput) {
    const Arguments arguments = parsed({});
    EXPECT_EQ(arguments.output, "");
    EXPECT_FALSE(arguments.force || arguments.mask || arguments.help || arguments.version);
    EXPECT_TRUE(arguments.properties.empty());
}

TEST(Arguments, allTogether) {
    const Arguments arguments = parsed({"--property", "20:0x50:7", "-o", "board.toml", "--mask",
                                        "--force", "--property=0x14:0:0xFFFFFFFF"});
    EXPECT_EQ(arguments.output, "board.toml");
    EXPECT_TRUE(arguments.force);
    EXPECT_TRUE(arguments.mask);
    const std::vector<NodeProperty> expected{{.bus = 20, .target = 0x50, .id = 7},
                                             {.bus = 20, .target = 0, .id = 0xFFFFFFFF}};
    EXPECT_EQ(arguments.properties, expected);
}

TEST(Arguments, nothingIsReadBehindHelpAndVersion) {
    EXPECT_TRUE(parsed({"--help", "--nonsense"}).help);
    EXPECT_TRUE(parsed({"--version", "nonsense"}).version);
}

TEST(Arguments, aLeadingZeroDoesNotMakeANumberOctal) {
    EXPECT_EQ(parsed({"--property", "010:0:1"}).properties.at(0).bus, 10U);
}

TEST(Arguments, takesTheHighestBusOfLinux) {
    EXPECT_EQ(parsed({"--property", "1048575:0:1"}).properties.at(0).bus, 1048575U);
}

struct Wrong {
    std::vector<std::string> words;
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
    testing::Values(
        Wrong{{"board.toml"}, "board.toml is not an option"},
        Wrong{{"-x"}, "-x is not an option, or has a value it does not take"},
        Wrong{{"--nonsense"}, "--nonsense is not an option, or has a value it does not take"},
        Wrong{{"--mask=1"}, "--mask=1 is not an option, or has a value it does not take"},
        Wrong{{"-o"}, "-o needs a value"}, Wrong{{"--property"}, "--property needs a value"},
        Wrong{{"-o", ""}, "-o: the name is empty"}, Wrong{{"--force"}, "--force needs -o FILE"},
        Wrong{{"--property", ""}, "--property : is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:2"}, "--property 1:2: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:2:3:4"}, "--property 1:2:3:4: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:2:"}, "--property 1:2:: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "-1:2:3"}, "--property -1:2:3: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:0x:3"}, "--property 1:0x:3: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:50h:3"}, "--property 1:50h:3: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1048576:0:0"},
              "--property 1048576:0:0: is not BUS:TARGET:ID, three numbers"},
        Wrong{{"--property", "1:0:4294967296"},
              "--property 1:0:4294967296: is not BUS:TARGET:ID, three numbers"}));

TEST(Usage, namesEveryOption) {
    EXPECT_EQ(
        usage(),
        "usage: zolt_capture [option]...\n"
        "\n"
        "Reads what this board shows, and writes it as a board description for\n"
        "zolt_sim. Only reads from the hardware.\n"
        "\n"
        "  -o FILE                       write the description to FILE, which must not exist\n"
        "                                (default: standard output)\n"
        "  --force                       overwrite FILE if it exists\n"
        "  --mask                        replace texts that may identify a machine or a customer\n"
        "  --property BUS:TARGET:ID...   read a property of a node, too; TARGET 0 is the\n"
        "                                bus itself; numbers are decimal, or 0x...\n"
        "  --help                        print this and exit\n"
        "  --version                     print the version and exit\n"
        "\n"
        "Exit status: 0 if everything was read; 1 if something was refused, which the\n"
        "description records; 2 if nothing was written.\n");
}

TEST(Date, isThatOfTheEnvironment) {
    EXPECT_EQ(dateOf("0"), "1970-01-01 00:00 UTC");
    EXPECT_EQ(dateOf("1795269780"), "2026-11-21 14:03 UTC");
}

TEST(Date, isNowWithoutTheEnvironment) {
    const auto now = dateOf(nullptr);
    ASSERT_TRUE(now.has_value());
    EXPECT_EQ(now->size(), std::string("2026-11-21 14:03 UTC").size());
    EXPECT_GE(*now, "2020");
}

TEST(Date, wrongNumbersAreRefused) {
    for (const char* const wrong :
         {"", " 1", "1 ", "-1", "x", "0x10", "99999999999999999999", "9223372036854775807"}) {
        EXPECT_EQ(dateOf(wrong), std::nullopt) << wrong;
    }
}

} // namespace
} // namespace capture
