// The boards that a command line names.
#pragma once

#include "board/board.h"

#include <string>

namespace zolt_board {

/// Loads a board: of a file, by the name of a board that comes with the tools, or of standard input
/// for "-". A description on standard input may have the size of one in a file, and the path of its
/// base is relative to the working directory.
/// @throw board::BoardError when there is no such board or when the description is wrong; what() is
///        one line, "FILE:LINE: reason", safe for a terminal
/// @throw std::runtime_error when the directory of boards does not exist
[[nodiscard]] board::Board loadBoard(const std::string& board);

/// The name of a board for people: "standard input" for "-". It is safe for a terminal.
[[nodiscard]] std::string shownName(const std::string& board);

} // namespace zolt_board
