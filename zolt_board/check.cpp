#include "zolt_board/check.h"

#include "board/message_text.h"
#include "zolt_board/board_input.h"
#include "zolt_board/check_board.h"
#include "zolt_board/finding.h"
#include "zolt_board/json.h"
#include "zolt_board/ordered_work.h"

#include <atomic>
#include <cstdio>
#include <exception>
#include <limits>
#include <string>
#include <vector>

namespace zolt_board {

namespace {

// What a check of one board has to tell.
struct Checked {
    Findings findings{};
    std::string failure{}; ///< why the board could not be looked at; empty: it was
};

Checked checkBoard(const std::string& board) {
    Checked checked;
    try {
        checked.findings = check(loadBoard(board));
    } catch (const std::exception& error) {
        checked.failure = error.what();
    }
    return checked;
}

std::string textOf(const std::string& board, const Checked& checked) {
    std::string text;
    for (const Finding& finding : checked.findings) {
        text.append(shownName(board)).append(": ").append(lineOf(finding)).append("\n");
    }
    return text;
}

Json toJson(const Finding& finding) {
    const FindingKind& kind = kindOf(finding);
    return {{"severity", severityName(kind.severity)},
            {"identifier", kind.identifier},
            {"place", finding.place},
            {"what", finding.what},
            {"expected", finding.expected}};
}

Json toJson(const std::string& board, const Checked& checked) {
    Json json{{"board", shownName(board)}};
    if (!checked.failure.empty()) {
        json["failure"] = board::printable(checked.failure);
        return json;
    }
    json["findings"] = Json::array();
    for (const Finding& finding : checked.findings) {
        json["findings"].push_back(toJson(finding));
    }
    return json;
}

// A report with one element in the list of boards for each board. The elements are written one by
// one, so that the report of many boards takes no memory.
class JsonReport {
public:
    JsonReport() {
        Json report = reportOf("check");
        report["boards"] = Json::array();
        frame_ = documentText(report);
        split_ = frame_.rfind("[]") + 1;
    }

    [[nodiscard]] std::string start() const { return frame_.substr(0, split_); }
    [[nodiscard]] std::string end() const { return "\n  " + frame_.substr(split_); }

    /// Indents an element, and puts it behind those before it.
    [[nodiscard]] static std::string element(const Json& json, bool isFirst) {
        std::string text = isFirst ? "\n    " : ",\n    ";
        std::string lines = documentText(json);
        lines.pop_back(); // the newline at the end
        for (const char character : lines) {
            text.append(character == '\n' ? "\n    " : std::string(1, character));
        }
        return text;
    }

private:
    std::string frame_;
    std::size_t split_ = 0;
};

// Shared by the threads that check.
struct Outcome {
    std::atomic<bool> found = false;
    std::atomic<bool> hasFailed = false;

    void add(const Checked& checked) {
        if (!checked.failure.empty()) {
            hasFailed = true;
        } else if (!checked.findings.empty()) {
            found = true;
        }
    }

    [[nodiscard]] int status() const {
        return hasFailed ? failed : found ? somethingFound : nothingFound;
    }
};

// A line for each kind of findings: identifier, severity, meaning and remedy, between tabs.
std::string listOfKinds() {
    std::string text;
    for (const FindingKind& kind : findingKinds()) {
        for (const std::string_view part :
             {kind.identifier, severityName(kind.severity), kind.meaning, kind.remedy}) {
            text.append(text.empty() || text.back() == '\n' ? "" : "\t").append(part);
        }
        text.append("\n");
    }
    return text;
}

int runCheck(const Arguments& arguments, Output& output) {
    if (arguments.list) {
        output.text = listOfKinds();
        return nothingFound;
    }
    const std::vector<std::string>& boards = arguments.boards;
    const JsonReport report;
    Outcome outcome;
    const auto work = [&](std::size_t item) -> WorkResult {
        const Checked checked = checkBoard(boards[item]);
        outcome.add(checked);
        return {.text = arguments.json
                            ? JsonReport::element(toJson(boards[item], checked), item == 0)
                            : textOf(boards[item], checked),
                .complaint = checked.failure};
    };
    if (arguments.json) {
        output.text = report.start();
    }
    workInOrder(boards.size(), work, [&](std::size_t, const WorkResult& result) {
        output.text.append(result.text);
        print(output);
        if (!result.complaint.empty()) {
            (void)std::fprintf(stderr, "zolt_board: %s\n", result.complaint.c_str());
        }
    });
    if (arguments.json) {
        output.text.append(report.end());
    }
    return outcome.status();
}

constexpr std::string_view checkOptions[] = {"json", "list"};

} // namespace

constexpr Verb checkVerb{
    .name = "check",
    .arguments = "[--json | --list] BOARD...",
    .summary = "what is wrong with boards",
    .help =
        "Prints a line for each statement of a board that cannot be, or that another statement\n"
        "contradicts: BOARD: SEVERITY: FINDING: PLACE: WHAT; expected WHAT. zolt-findings(7) "
        "lists\n"
        "the findings.\n",
    .status = "Exit status: 0 if there is no finding, 1 if there are findings, 2 if a board could\n"
              "not be looked at.\n",
    .options = checkOptions,
    .fewestBoards = 1,
    .mostBoards = std::numeric_limits<std::size_t>::max(),
    .run = runCheck,
};

} // namespace zolt_board
