// Compares ordered lists of rules, each of which is a line of words: faults, orders of the service.
#pragma once

#include "zolt_board/change_list.h"

#include "board/board.h"

#include <string>
#include <vector>

namespace zolt_board {

/// @param changes  at the place of the rules: "faults"
void compareRules(const std::vector<std::string>& before, const std::vector<std::string>& after,
                  ChangeList changes);

void compareFaults(const board::Board& before, const board::Board& after,
                   std::vector<Change>& changes);

} // namespace zolt_board
