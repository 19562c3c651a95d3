// The service of a board: every module, as the service sees it.
#pragma once

#include "standin/board/board.h"
#include "standin/service/model.h"

namespace standin {

/// What the service publishes: the information object, an object manager for each type of module,
/// and an object for each module that has a type, its properties taken from the payload's bytes.
[[nodiscard]] ServiceModel publishBoard(const Board& board);

} // namespace standin
