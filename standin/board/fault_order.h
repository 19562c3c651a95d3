// Adds fault rules to a board, and refuses rules that could never strike.
#pragma once

#include "standin/board/board.h"

#include <cstddef>
#include <string_view>

namespace standin {

constexpr std::size_t mostFaults = 1024; ///< of a board, those of the command line included

/// Adds a rule to a board, behind the rules that it has. All other parts of the board must be read.
/// @throw FaultRuleError when the rule is malformed, names a HAL object that does not exist, has a
///        pattern that fits no register's name, or is one too many
void orderFault(Board& board, std::string_view text);

} // namespace standin
