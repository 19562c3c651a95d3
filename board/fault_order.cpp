#include "board/fault_order.h"

#include "board/cpld_contents.h"
#include "board/cpld_map.h"
#include "board/message_text.h"
#include "board/number.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <algorithm>
#include <map>
#include <vector>

namespace board {

namespace {

// Refuses a rule that fits none of the things, and names things that are similar to its subject.
// @param reason  stands in front of the subject
template <typename T>
void requireFit(const FaultRule& rule, const std::map<std::string, T>& things, const char* reason) {
    if (std::ranges::any_of(things, [&](const auto& thing) { return fits(rule, thing.first); })) {
        return;
    }
    std::vector<std::string> names;
    names.reserve(things.size());
    for (const auto& [name, thing] : things) {
        names.push_back(name);
    }
    throw FaultRuleError(reason + inQuotes(rule.subject) + suggestion(rule.subject, names));
}

bool isOfBusDriver(const FaultRule& rule) {
    return rule.kind == FaultKind::i2cOpen || rule.kind == FaultKind::i2cIoctl;
}

void refuseTooMany(const Board& board, const FaultRule& rule) {
    if (board.faults.size() >= mostFaults) {
        throw FaultRuleError("a board has at most " + std::to_string(mostFaults) + " faults");
    }
    if (isOfBusDriver(rule) &&
        std::ranges::count_if(board.faults, isOfBusDriver) >= BUS_CORE_FAULTS) {
        throw FaultRuleError("the bus driver has room for " + std::to_string(BUS_CORE_FAULTS) +
                             " faults of i2c-open and i2c-ioctl");
    }
}

} // namespace

void FaultOrders::order(std::string_view text) {
    FaultRule rule = parseFaultRule(text);
    refuseTooMany(*board_, rule);
    refuseIdle(rule);
    board_->faults.push_back(std::move(rule));
}

void FaultOrders::refuseIdle(const FaultRule& rule) {
    switch (rule.kind) {
    case FaultKind::namedRead:
        // Empty slots and instances without a table have named registers, too.
        if (registers_.empty()) {
            registers_ = deriveCpldContents(*board_).named;
        }
        requireFit(rule, registers_, "no register has a name like ");
        break;
    case FaultKind::halObject:
    case FaultKind::halRead:
        requireFit(rule, board_->halObjects, "the HAL has no object ");
        if (rule.first >= payloadBlockSize) {
            throw FaultRuleError("the object " + inQuotes(rule.subject) + " ends at byte " +
                                 addressText(payloadBlockSize - 1));
        }
        break;
    default: // other rules may name things that the board does not have
        break;
    }
}

void orderFault(Board& board, std::string_view text) {
    FaultOrders(board).order(text);
}

} // namespace board
