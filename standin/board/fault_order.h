// Orders faults for a board: whatever could never strike is refused.
#pragma once

#include "standin/board/board.h"

#include <string_view>

namespace standin {

/// Puts a rule behind those of a board that is described whole but for its faults.
/// @throw FaultRuleError when the rule is not understood, or names what no board has: a HAL object,
///        or a pattern that fits no register
void orderFault(Board& board, std::string_view text);

} // namespace standin
