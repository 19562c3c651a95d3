// Compares what the services of two boards publish, and their orders.
#pragma once

#include "zolt_board/slot_differences.h"

#include <vector>

namespace zolt_board {

/// The order of objects and of properties does not count. What follows from a reported change of a
/// slot is not reported again: the objects of modules that come or go, and properties that show a
/// payload as it is.
void compareServices(const BoardView& before, const BoardView& after, const SlotFates& fates,
                     std::vector<Change>& changes);

} // namespace zolt_board
