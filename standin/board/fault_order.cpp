#include "standin/board/fault_order.h"

#include "standin/board/cpld_contents.h"

#include <algorithm>
#include <ranges>

namespace standin {

namespace {

bool anyFits(const FaultRule& rule, auto&& names) {
    return std::ranges::any_of(names, [&](const std::string& name) { return fits(rule, name); });
}

void refuseIdle(const Board& board, const FaultRule& rule) {
    switch (rule.kind) {
    case FaultKind::namedRead:
        // An empty slot and an instance that is not there have their registers too.
        if (!anyFits(rule, std::views::keys(deriveCpldContents(board).named))) {
            throw FaultRuleError("no register has a name like '" + rule.subject + "'");
        }
        break;
    case FaultKind::halObject:
    case FaultKind::halRead:
        if (!anyFits(rule, std::views::keys(board.halObjects))) {
            throw FaultRuleError("the HAL has no object '" + rule.subject + "'");
        }
        break;
    default: // all the others strike whatever is asked for, there or not
        break;
    }
}

} // namespace

void orderFault(Board& board, std::string_view text) {
    FaultRule rule = parseFaultRule(text);
    refuseIdle(board, rule);
    board.faults.push_back(std::move(rule));
}

} // namespace standin
