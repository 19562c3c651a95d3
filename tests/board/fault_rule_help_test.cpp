// Holds the table of the fault rules to the parser and to the documents.
#include "board/fault_rule.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace board {
namespace {

std::string document(const std::string& name) {
    const char* const directory = std::getenv("DOCUMENTS");
    std::ostringstream text;
    text << std::ifstream(std::string(directory == nullptr ? "docs" : directory) + "/" + name)
                .rdbuf();
    EXPECT_FALSE(text.str().empty()) << name;
    return text.str();
}

std::string firstWord(std::string_view usage) {
    return std::string(usage.substr(0, usage.find(' ')));
}

TEST(FaultRuleHelp, listsTheKindsOfTheParserInOrder) {
    std::string kinds = "a fault begins with one of: ";
    for (const FaultRuleHelp& rule : faultRuleHelp()) {
        kinds.append(kinds.ends_with(": ") ? "" : ", ").append(firstWord(rule.usage));
    }
    try {
        (void)parseFaultRule("");
        ADD_FAILURE() << "accepted";
    } catch (const FaultRuleError& error) {
        EXPECT_EQ(error.what(), kinds);
    }
}

std::vector<FaultRuleHelp> everything() {
    std::vector<FaultRuleHelp> all(faultRuleHelp().begin(), faultRuleHelp().end());
    all.insert(all.end(), faultTimingHelp().begin(), faultTimingHelp().end());
    return all;
}

// The usage with plain words in place of the caller's.
std::string example(std::string usage) {
    for (const auto& [placeholder, word] : {std::pair("N", "3"), std::pair("TIME", "250ms")}) {
        const std::size_t at = usage.find(placeholder);
        if (at != std::string::npos) {
            usage.replace(at, std::string_view(placeholder).size(), word);
        }
    }
    return usage == "fail" ? "fail delay 1s" : usage;
}

TEST(FaultRuleHelp, listsWordsOfTimeThatTheParserTakes) {
    for (const FaultRuleHelp& timing : faultTimingHelp()) {
        const std::string rule = "i2c-ioctl 5 plain " + example(std::string(timing.usage));
        EXPECT_NO_THROW((void)parseFaultRule(rule)) << rule;
    }
}

TEST(FaultRuleHelp, meansOneSentence) {
    for (const FaultRuleHelp& rule : everything()) {
        EXPECT_TRUE(rule.meaning.ends_with('.')) << rule.usage;
        EXPECT_EQ(rule.meaning.find(". "), std::string_view::npos) << rule.usage;
        EXPECT_EQ(rule.meaning.find('\n'), std::string_view::npos) << rule.usage;
        EXPECT_LE(rule.usage.size(), 58U) << rule.usage; // fits a line of zolt_sim's help
    }
}

TEST(FaultRuleHelp, isInTheReferenceWordForWord) {
    const std::string reference = document("board-description.md");
    for (const FaultRuleHelp& rule : everything()) {
        const std::string row = std::string("\n| `").append(rule.usage).append("` | ");
        EXPECT_NE(reference.find(row), std::string::npos) << row;
    }
}

TEST(FaultRuleHelp, kindsAndWordsOfTimeAreInTheManual) {
    const std::string manual = document("zolt_sim.1");
    for (const FaultRuleHelp& rule : faultRuleHelp()) {
        const std::string kind = firstWord(rule.usage);
        EXPECT_NE(manual.find("\n.It Cm " + kind + " "), std::string::npos) << kind;
    }
    for (const FaultRuleHelp& timing : faultTimingHelp()) {
        std::string item = "\n.It Cm " + std::string(timing.usage) + "\n";
        for (const auto& [word, macro] :
             {std::pair("Cm N times", "Ar n Cm times"), std::pair("after N", "after Ar n"),
              std::pair("TIME", "Ar time")}) {
            if (const std::size_t at = item.find(word); at != std::string::npos) {
                item.replace(at, std::string_view(word).size(), macro);
            }
        }
        EXPECT_NE(manual.find(item), std::string::npos) << item;
    }
}

} // namespace
} // namespace board
