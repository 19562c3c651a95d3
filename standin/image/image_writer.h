// Writes the image of a board, which the platform's libraries map.
#pragma once

#include "board/board.h"

#include <string>

namespace standin {

/// Writes the image of @p board to a new file. @throw std::system_error when that fails
void writeImage(const board::Board& board, const std::string& path);

} // namespace standin
