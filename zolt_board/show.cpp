#include "zolt_board/show.h"

#include "zolt_board/board_input.h"

#include <string_view>

namespace zolt_board {

namespace {

int run(const Arguments& arguments, Output& output) {
    const std::string& name = arguments.boards.front();
    const board::Board board = loadBoard(name);
    if (arguments.json) {
        output.text = documentText(boardToJson(board, name));
    } else if (arguments.tree) {
        showTree(board, output);
    } else {
        showSummary(board, output);
    }
    return nothingFound;
}

constexpr std::string_view showOptions[] = {"tree", "json", "color"};

} // namespace

constexpr Verb showVerb{
    .name = "show",
    .arguments = "[--tree | --json] [--color WHEN] BOARD",
    .summary = "what a board has",
    .help = "Shows what a board has: a summary, and a line for each occupied slot.\n",
    .status = "Exit status: 0 if the board is shown, 2 if it could not be.\n",
    .options = showOptions,
    .fewestBoards = 1,
    .mostBoards = 1,
    .run = run,
};

} // namespace zolt_board
