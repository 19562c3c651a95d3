#include "zolt_board/check_board.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"
#include "tests/zolt_board/finding_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace zolt_board {

void PrintTo(const std::vector<std::string>& lines, std::ostream* out) {
    for (const std::string& line : lines) {
        *out << '\n' << line;
    }
}

namespace {

std::vector<std::string> linesOf(const Findings& findings) {
    std::vector<std::string> lines;
    for (const Finding& finding : findings) {
        lines.push_back(lineOf(finding));
    }
    return lines;
}

std::vector<std::string> findingsIn(const std::string& description) {
    return linesOf(check(board::test::boardOf(description, "b.toml")));
}

board::Board boardNamed(const std::string& name) {
    return board::loadBoard(std::string(BOARDS "/").append(name).append(".toml"));
}

class EveryFinding : public testing::TestWithParam<test::FindingRow> {};

TEST_P(EveryFinding, isInTheBoardAndNotInItsNeighbour) {
    const test::FindingRow& row = GetParam();
    EXPECT_EQ(findingsIn(row.wrong), row.lines);
    EXPECT_EQ(findingsIn(row.right), std::vector<std::string>{});
}

std::string rowName(const testing::TestParamInfo<test::FindingRow>& info) {
    const Finding finding{info.param.kind, "", "", ""};
    std::string name(kindOf(finding).identifier);
    std::ranges::replace(name, '-', '_');
    return name.append("_").append(info.param.name);
}

INSTANTIATE_TEST_SUITE_P(Table, EveryFinding, testing::ValuesIn(test::findingRows()), rowName);

TEST(FindingKinds, haveARowEach) {
    std::set<std::string_view> missing;
    for (const FindingKind& kind : findingKinds()) {
        missing.insert(kind.identifier);
    }
    for (const test::FindingRow& row : test::findingRows()) {
        for (const Finding& finding : check(board::parseBoard(row.wrong, "b.toml"))) {
            if (finding.kind == row.kind) {
                missing.erase(kindOf(finding).identifier);
            }
        }
    }
    EXPECT_EQ(missing, std::set<std::string_view>{});
}

TEST(FindingKinds, haveIdentifiersOfSmallLettersAndHyphens) {
    std::set<std::string_view> identifiers;
    for (const FindingKind& kind : findingKinds()) {
        const auto isAllowed = [](char c) { return (c >= 'a' && c <= 'z') || c == '-'; };
        EXPECT_TRUE(std::ranges::all_of(kind.identifier, isAllowed)) << kind.identifier;
        EXPECT_TRUE(identifiers.insert(kind.identifier).second) << kind.identifier;
        EXPECT_TRUE(kind.meaning.ends_with('.')) << kind.identifier;
        EXPECT_TRUE(kind.remedy.ends_with('.')) << kind.identifier;
    }
}

TEST(Check, findsNothingInABoardWithoutContents) {
    EXPECT_EQ(findingsIn(""), std::vector<std::string>{});
}

TEST(Check, findsNothingInTheDemoBoard) {
    EXPECT_EQ(linesOf(check(boardNamed("demo"))), std::vector<std::string>{});
}

// Its data are right: only the reads by name fail.
TEST(Check, findsNothingInTheBoardWithoutNames) {
    EXPECT_EQ(linesOf(check(boardNamed("raw_only"))), std::vector<std::string>{});
}

TEST(Check, findsEveryKindInTheHostileBoard) {
    std::set<std::string_view> missing;
    for (const FindingKind& kind : findingKinds()) {
        missing.insert(kind.identifier);
    }
    for (const Finding& finding : check(boardNamed("hostile"))) {
        missing.erase(kindOf(finding).identifier);
    }
    EXPECT_EQ(missing, std::set<std::string_view>{});
}

} // namespace
} // namespace zolt_board
