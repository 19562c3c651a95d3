#include "zolt_board/board_input.h"

#include "board/board_files.h"
#include "board/board_loader.h"
#include "board/message_text.h"

#include <unistd.h>

namespace zolt_board {

namespace {

constexpr const char* standardInput = "-";
constexpr const char* standardInputName = "standard input";

} // namespace

board::Board loadBoard(const std::string& board) {
    if (board == standardInput) {
        const board::DescriptionFile description =
            board::readDescription(STDIN_FILENO, standardInputName);
        return board::parseBoard(description.text, standardInputName, board::boardFile);
    }
    return board::loadBoard(board::boardFile(board), board::boardFile);
}

std::string shownName(const std::string& board) {
    return board == standardInput ? standardInputName : board::shortened(board);
}

} // namespace zolt_board
