// Adds fault rules to a board, and refuses rules that could never apply.
#pragma once

#include "board/board.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace board {

constexpr std::size_t mostFaults = 1024; ///< of a board, those of the command line included

/// Adds rules to a board, behind the rules that it has. All other parts of the board must be read.
class FaultOrders {
public:
    explicit FaultOrders(Board& board) : board_(&board) {}

    /// @throw FaultRuleError when the rule is malformed, names an unknown HAL object, has a pattern
    ///        that fits no register's name, or is one too many
    void order(std::string_view text);

private:
    void refuseIdle(const FaultRule& rule);

    Board* board_;
    std::map<std::string, Bytes> registers_; ///< by name; derived once, for the first named-read
};

/// Adds a single rule.
void orderFault(Board& board, std::string_view text);

} // namespace board
