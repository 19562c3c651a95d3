// Lays a board out as the image that the platform's libraries map.
#pragma once

#include "standin/board/board.h"

#include <string>

namespace standin {

/// Writes the image of @p board to a new file. @throw std::system_error when it cannot
void writeImage(const Board& board, const std::string& path);

} // namespace standin
