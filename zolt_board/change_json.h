// Differences between two boards as JSON. docs/board-diff.schema.json describes the report.
#pragma once

#include "zolt_board/change.h"
#include "zolt_board/json.h"

#include <string>
#include <vector>

namespace zolt_board {

/// @param before  the name of the first board, for people
[[nodiscard]] Json diffReport(const std::string& before, const std::string& after,
                              const std::vector<Change>& changes);

} // namespace zolt_board
