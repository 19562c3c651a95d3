#include "standin/launcher/arguments.h"

#include "board/fault_rule.h"

#include <gtest/gtest.h>

namespace standin {
namespace {

Arguments parse(const std::vector<const char*>& given) {
    static std::vector<const char*> words; // the command points into them
    words = given;
    words.insert(words.begin(), "zolt_sim");
    words.push_back(nullptr);
    return parseArguments(static_cast<int>(words.size()) - 1,
                          const_cast<char* const*>(words.data()));
}

std::vector<std::string> command(const Arguments& arguments) {
    std::vector<std::string> words;
    for (char* const* word = arguments.command; word != nullptr && *word != nullptr; ++word) {
        words.emplace_back(*word);
    }
    return words;
}

using Words = std::vector<std::string>;

TEST(Arguments, commandAlone) {
    const Arguments arguments = parse({"tool", "-o", "1", "--board", "x"});
    EXPECT_EQ(arguments.board, "demo");
    EXPECT_TRUE(arguments.faults.empty());
    EXPECT_FALSE(arguments.kernelBuses);
    EXPECT_FALSE(arguments.logs.times);
    EXPECT_EQ(command(arguments), (Words{"tool", "-o", "1", "--board", "x"}));
}

TEST(Arguments, everyOption) {
    const Arguments arguments =
        parse({"--board", "b.toml", "--fault", "named-read *", "--fault=raw-read 1 status 2",
               "--debug-log", "d", "--call-log=c", "--i2c-log", "i", "--bus-log=s", "--log-times",
               "--kernel-buses", "--", "-tool"});
    EXPECT_EQ(arguments.board, "b.toml");
    EXPECT_EQ(arguments.faults, (Words{"named-read *", "raw-read 1 status 2"}));
    EXPECT_EQ(arguments.logs.debug, "d");
    EXPECT_EQ(arguments.logs.calls, "c");
    EXPECT_EQ(arguments.logs.i2c, "i");
    EXPECT_EQ(arguments.logs.bus, "s");
    EXPECT_TRUE(arguments.logs.times);
    EXPECT_TRUE(arguments.kernelBuses);
    EXPECT_EQ(command(arguments), Words{"-tool"});
}

TEST(Arguments, checkTakesBoards) {
    const Arguments arguments = parse({"--check", "demo", "b.toml"});
    EXPECT_TRUE(arguments.check);
    EXPECT_EQ(command(arguments), (Words{"demo", "b.toml"}));
    EXPECT_FALSE(parse({"tool", "--check"}).check);
}

TEST(Arguments, listTakesNamesOfLists) {
    const Arguments arguments = parse({"--list", "boards", "faults"});
    EXPECT_TRUE(arguments.list);
    EXPECT_EQ(command(arguments), (Words{"boards", "faults"}));
    EXPECT_TRUE(command(parse({"--list"})).empty());
    EXPECT_FALSE(parse({"tool", "--list"}).list);
}

TEST(Arguments, helpAndVersionNeedNoCommand) {
    EXPECT_TRUE(parse({"--help"}).help);
    EXPECT_TRUE(parse({"--version"}).version);
}

TEST(Arguments, usageListsEveryFaultRule) {
    const std::string text = usage();
    for (const board::FaultRuleHelp& rule : board::faultRuleHelp()) {
        EXPECT_NE(text.find("\n" + std::string(22, ' ') + std::string(rule.usage) + "\n"),
                  std::string::npos)
            << rule.usage;
    }
    const std::size_t timings = text.find("TIMING is any of:");
    ASSERT_NE(timings, std::string::npos);
    for (const board::FaultRuleHelp& timing : board::faultTimingHelp()) {
        EXPECT_NE(text.find(timing.usage, timings), std::string::npos) << timing.usage;
    }
}

TEST(Arguments, refusesWithAReason) {
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{}, "there is no command to run"},
        {{"--board", "x"}, "there is no command to run"},
        {{"--check"}, "there is no board to check"},
        {{"--check", "--fault", "bus absent", "demo"}, "--check takes no --fault"},
        {{"--board"}, "--board needs a value"},
        {{"--nothing", "x"}, "--nothing is not an option"},
        {{"--board", "", "x"}, "--board: the name is empty"},
        {{"--debug-log=", "x"}, "--debug-log: the name is empty"},
        {{"--call-log", "", "x"}, "--call-log: the name is empty"},
        {{"--i2c-log", "", "x"}, "--i2c-log: the name is empty"},
        {{"--bus-log", "", "x"}, "--bus-log: the name is empty"},
        {{"--help=yes", "x"}, "--help=yes is not an option"},
    };
    for (const auto& [words, reason] : cases) {
        try {
            (void)parse(words);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const ArgumentsError& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

} // namespace
} // namespace standin
