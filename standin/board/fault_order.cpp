#include "standin/board/fault_order.h"

#include "standin/board/cpld_contents.h"

#include <algorithm>

namespace standin {

namespace {

template <typename T>
bool fitsAny(const FaultRule& rule, const std::map<std::string, T>& things) {
    return std::ranges::any_of(things, [&](const auto& thing) { return fits(rule, thing.first); });
}

void refuseIdle(const Board& board, const FaultRule& rule) {
    switch (rule.kind) {
    case FaultKind::namedRead:
        // Empty slots and instances without a table have named registers, too.
        if (!fitsAny(rule, deriveCpldContents(board).named)) {
            throw FaultRuleError("no register has a name like '" + rule.subject + "'");
        }
        break;
    case FaultKind::halObject:
    case FaultKind::halRead:
        if (!fitsAny(rule, board.halObjects)) {
            throw FaultRuleError("the HAL has no object '" + rule.subject + "'");
        }
        break;
    default: // other rules may name things that the board does not have
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
