#include "zolt_board/diff.h"

#include "zolt_board/board_input.h"
#include "zolt_board/change_json.h"
#include "zolt_board/differences.h"

#include <string>
#include <vector>

namespace zolt_board {

namespace {

int compareBoards(const Arguments& arguments, Output& output) {
    const std::string& before = arguments.boards[0];
    const std::string& after = arguments.boards[1];
    const std::vector<Change> changes = differences(loadBoard(before), loadBoard(after));
    if (arguments.json) {
        output.text = documentText(diffReport(shownName(before), shownName(after), changes));
    } else {
        for (const Change& change : changes) {
            output.text.append(textOf(change)).append("\n");
        }
    }
    return changes.empty() ? nothingFound : somethingFound;
}

constexpr std::string_view diffOptions[] = {"json"};

} // namespace

constexpr Verb diffVerb{
    .name = "diff",
    .arguments = "[--json] BOARD BOARD",
    .summary = "what changed from one board to another",
    .help = "Shows what differs between two boards, a line for each difference. Names of\n"
            "boards, and other ways to describe the same board, are no difference.\n",
    .status = "Exit status: 0 if both boards are the same, 1 if they differ, 2 if a board\n"
              "could not be read.\n",
    .options = diffOptions,
    .fewestBoards = 2,
    .mostBoards = 2,
    .run = compareBoards,
};

} // namespace zolt_board
