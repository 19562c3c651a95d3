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

// The payload states more bytes than it has, which is a finding when readers get the payload.
constexpr const char* shortPayload = R"(
[[slot]]
id = 5
dstat = 3
module_class = 0x1A
payload = "01 1A 03 00 00 01 00 02 00 00 00 00 00 00 00 E0"
)";

struct Reads {
    const char* faults; ///< rules of the board
    bool reachPayload;
};

class BulkReads : public testing::TestWithParam<Reads> {};

TEST_P(BulkReads, thatFailHideThePayloadWhoseBytesTheyTouch) {
    const auto& [faults, reachPayload] = GetParam();
    const Findings found = check(board::test::boardOf(
        std::string("faults = [").append(faults).append("]").append(shortPayload), "b.toml"));
    const bool isFound = std::ranges::any_of(found, [](const Finding& finding) {
        return finding.kind == Kind::payloadShorterThanStated;
    });
    EXPECT_EQ(isFound, reachPayload) << faults;
}

INSTANTIATE_TEST_SUITE_P(
    Rules, BulkReads,
    testing::Values(
        Reads{"", true}, Reads{R"("hal-read PICPWR_PAYLOADS", "raw-read 0x2A01-0x89FF")", false},
        Reads{R"("hal-read PICPWR_PAYLOADS 0x0001-0x0177", "raw-read 0x2A01-0x89FF")", false},
        Reads{R"("hal-read PICPWR_PAYLOADS 0x0177", "raw-read 0x2A01-0x89FF")", true},
        Reads{R"("hal-read PICPWR_PAYLOADS 0x00F7", "raw-read 0x2A01-0x89FF")", false},
        Reads{R"("hal-read PICPWR_PAYLOADS 0x0178-0x5FFF", "raw-read 0x2A01-0x89FF")", true},
        Reads{R"("hal-read PICPWR_PAYLOADS", "hal-read PICPWR_PAYLOADS 0x5000 delay 5ms",
                 "raw-read 0x2A01-0x89FF")",
              false}));

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
