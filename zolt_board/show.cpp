#include "zolt_board/show.h"

#include "board/message_text.h"
#include "zolt_board/board_input.h"

#include <array>
#include <cstddef>
#include <string>

namespace zolt_board {

namespace {

// The number of slots in each discovery status, which has two bits. 0: the slot is empty.
void addSummary(const board::Board& board, std::string& text) {
    std::array<std::size_t, 4> counts{};
    for (const board::Slot& slot : board.slots) {
        ++counts[slot.dstat];
    }
    counts[0] += board::slotCount - board.slots.size(); // these have no table
    text.append("slots: ").append(std::to_string(counts[0])).append(" empty");
    for (std::size_t dstat = 1; dstat < counts.size(); ++dstat) {
        text.append(", ")
            .append(std::to_string(counts[dstat]))
            .append(" with dstat ")
            .append(std::to_string(dstat));
    }
    text.append("\n");
}

int showBoard(const Arguments& arguments, Output& output) {
    const board::Board board = loadBoard(arguments.boards.front());
    if (!board.name.empty()) {
        output.text.append(board::printable(board.name)).append("\n");
    }
    addSummary(board, output.text);
    return nothingFound;
}

constexpr std::string_view options[] = {"color"};

} // namespace

constexpr Verb showVerb{
    .name = "show",
    .arguments = "[option]... BOARD",
    .summary = "what a board has",
    .help = "Shows what a board description describes.\n",
    .status = "Exit status: 0 if the board is shown, 2 if it could not be.\n",
    .options = options,
    .fewestBoards = 1,
    .mostBoards = 1,
    .run = showBoard,
};

} // namespace zolt_board
