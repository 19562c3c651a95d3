#include "console/options.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zolt {
namespace {

const std::vector<OptionForm> forms{
    {.letter = 'o', .argument = "FILE", .help = "write to FILE"},
    {.letter = 'q', .help = "say nothing"},
    {.name = "color", .argument = "WHEN", .isRepeated = true, .help = "one\ntwo"},
    {.name = "a-long-name-of-an-option", .help = "three"},
};

// What a reader finds: each option as its place and value, then the other words, or the refusal.
std::vector<std::string> found(std::vector<std::string> words,
                               const std::vector<OptionForm>& known = forms) {
    words.insert(words.begin(), "program");
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    std::vector<std::string> all;
    try {
        OptionReader reader(static_cast<int>(words.size()), pointers.data(), known);
        while (const auto option = reader.next()) {
            all.push_back(
                std::to_string(*option).append(" ").append(reader.value() ? reader.value() : "-"));
        }
        all.insert(all.end(), reader.operands().begin(), reader.operands().end());
    } catch (const UnknownOption& error) {
        all.push_back("unknown " + error.word());
    } catch (const OptionError& error) {
        all.emplace_back(error.what());
    }
    return all;
}

using Words = std::vector<std::string>;

TEST(Options, areFoundInEachForm) {
    EXPECT_EQ(found({}), Words());
    EXPECT_EQ(found({"-q", "-ofile", "-o", "-q"}), Words({"1 -", "0 file", "0 -q"}));
    EXPECT_EQ(found({"--color=x", "--color", "y", "--color="}), Words({"2 x", "2 y", "2 "}));
    EXPECT_EQ(found({"--a-long"}), Words({"3 -"}));
}

TEST(Options, theFirstOneMayHaveANameAlone) {
    const std::vector<OptionForm> known{{.name = "all", .help = "show all"}};
    EXPECT_EQ(found({"--all"}, known), Words({"0 -"}));
    EXPECT_EQ(found({"--all=x"}, known), Words({"unknown --all=x"}));
}

TEST(Options, standAmongOtherWords) {
    EXPECT_EQ(found({"one", "-q", "-", "--", "-q"}), Words({"1 -", "one", "-", "-q"}));
}

TEST(Options, areRefusedAsTheyWereTyped) {
    EXPECT_EQ(found({"-q", "-x"}), Words({"1 -", "unknown -x"}));
    EXPECT_EQ(found({"-X"}), Words({"unknown -X"}));
    EXPECT_EQ(found({"--colour=x"}), Words({"unknown --colour=x"}));
    EXPECT_EQ(found({"--a-long=x"}), Words({"unknown --a-long=x"}));
    EXPECT_EQ(found({"-q\x01"}), Words({"1 -", "unknown -\x01"}));
    EXPECT_EQ(found({"-o"}), Words({"-o needs a value"}));
    EXPECT_EQ(found({"--color"}), Words({"--color needs a value"}));
}

TEST(Options, thatAreUnknownAreToldAsSuch) {
    EXPECT_STREQ(UnknownOption("--colour=x").what(),
                 "--colour=x is not an option, or has a value it does not take");
}

TEST(Options, helpStandsInAColumn) {
    EXPECT_EQ(helpOf(forms[0], 12), "  -o FILE   write to FILE\n");
    EXPECT_EQ(helpOf(forms[2], 22), "  --color WHEN...     one\n"
                                    "                      two\n");
    EXPECT_EQ(helpOf(forms[3], 12), "  --a-long-name-of-an-option three\n");
}

} // namespace
} // namespace zolt
