#include "zolt_board/readable.h"

#include "board/cpld_map.h"

#include <algorithm>
#include <string_view>

namespace zolt_board {

namespace {

bool isLasting(const board::FaultRule& rule) {
    return rule.after == 0 && rule.times == 0;
}

bool letsPass(const board::FaultRule& rule) {
    return rule.status == 0 && rule.delay != board::delayForever;
}

// Whether the rule's range has one of the registers or bytes.
bool touches(const board::FaultRule& rule, std::uint32_t first, std::uint32_t length) {
    return rule.first < first + length && rule.last >= first;
}

} // namespace

Readable::Readable(const board::Board& board) : board_(&board) {
    for (auto rule = board.faults.rbegin(); rule != board.faults.rend(); ++rule) {
        if (isLasting(*rule)) {
            lasting_.push_back(&*rule);
        }
    }
}

template <typename Fitting>
bool Readable::passes(board::FaultKind kind, const Fitting& fitting) const {
    const auto rule = std::ranges::find_if(lasting_, [&](const board::FaultRule* candidate) {
        return candidate->kind == kind && fitting(*candidate);
    });
    return rule == lasting_.end() || letsPass(**rule);
}

bool Readable::named(const std::string& name) const {
    return passes(board::FaultKind::namedRead,
                  [&](const board::FaultRule& rule) { return fits(rule, name); });
}

bool Readable::raw(std::uint32_t first, std::uint32_t length) const {
    return passes(board::FaultKind::rawRead,
                  [&](const board::FaultRule& rule) { return touches(rule, first, length); });
}

bool Readable::payloadBlock(std::uint32_t first, std::uint32_t length) const {
    const std::string name(board::payloadBlockName);
    return passes(board::FaultKind::halObject,
                  [&](const board::FaultRule& rule) { return fits(rule, name); }) &&
           passes(board::FaultKind::halRead, [&](const board::FaultRule& rule) {
               return fits(rule, name) && touches(rule, first, length);
           });
}

bool Readable::nodes(std::uint8_t deviceType) const {
    const auto answer = board_->i2c.answers.find(deviceType);
    const bool hasTree = answer == board_->i2c.answers.end() ||
                         answer->second.root == board::TypeAnswer::Root::nodes;
    return hasTree && passes(board::FaultKind::sysinfo, [&](const board::FaultRule& rule) {
               return rule.deviceType == deviceType;
           });
}

bool Readable::service() const {
    const auto any = [](const board::FaultRule&) { return true; };
    return passes(board::FaultKind::bus, any) && passes(board::FaultKind::service, any);
}

bool isAnswered(const board::ServiceModel& service, const std::string& path,
                const std::string& interface) {
    const auto order =
        std::ranges::find_if(service.orders, [&](const board::ServiceOrder& candidate) {
            return candidate.after == 0 && candidate.times == 0 &&
                   (candidate.path.empty() || candidate.path == path) &&
                   (candidate.interface.empty() || candidate.interface == interface);
        });
    return order == service.orders.end() || (order->action == board::ServiceOrder::Action::answer &&
                                             order->delay != board::ServiceOrder::forever);
}

} // namespace zolt_board
