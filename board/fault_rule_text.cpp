#include "board/fault_rule_text.h"

#include "board/device_type_word.h"
#include "board/fault_words.h"
#include "board/number.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace board {

namespace {

std::string rangeOf(const FaultRule& rule) {
    std::string text = addressText(rule.first);
    if (rule.last != rule.first) {
        text.append("-").append(addressText(rule.last));
    }
    return text;
}

std::string requestOf(const FaultRule& rule) {
    std::string text = std::to_string(rule.bus);
    text.append(" ").append(commandWord(rule.operation));
    if (rule.selector) {
        text.append(" ").append(std::to_string(*rule.selector));
    }
    return text;
}

std::string subjectOf(const FaultRule& rule) {
    switch (rule.kind) {
    case FaultKind::rawRead:
        return rangeOf(rule);
    case FaultKind::halRead: {
        const bool isWhole = rule.first == 0 && rule.last == lastByte;
        return isWhole ? rule.subject : std::string(rule.subject).append(" ").append(rangeOf(rule));
    }
    case FaultKind::i2cOpen:
        return std::to_string(rule.bus);
    case FaultKind::i2cIoctl:
        return requestOf(rule);
    case FaultKind::sysinfo:
        return deviceTypeWord(rule.deviceType);
    default:
        return rule.subject;
    }
}

// How the call fails, where that is not what the rule says without words.
std::string endOf(const FaultRule& rule) {
    const bool isI2c = rule.kind == FaultKind::i2cOpen || rule.kind == FaultKind::i2cIoctl;
    if (!rule.error.empty()) {
        return std::string(" error ").append(rule.error);
    }
    if (rule.status == 0 || rule.delay == delayForever) {
        return "";
    }
    if (isI2c && rule.status != EIO) {
        return std::string(" error ").append(strerrorname_np(rule.status));
    }
    if (!isI2c && rule.status != noAnswer) {
        return std::string(" status ").append(std::to_string(rule.status));
    }
    return rule.delay == 0 ? "" : " fail";
}

} // namespace

std::string_view faultWord(FaultKind kind) {
    return std::ranges::find(faultWords, kind, &FaultWord::kind)->word;
}

std::string_view commandWord(std::uint32_t operation) {
    return std::ranges::find(commandWords, operation, &CommandWord::operation)->word;
}

std::string faultRuleText(const FaultRule& rule) {
    std::string text(faultWord(rule.kind));
    text.append(" ").append(subjectOf(rule)).append(endOf(rule));
    if (rule.after != 0) {
        text.append(" after ").append(std::to_string(rule.after));
    }
    if (rule.times != 0) {
        text.append(" ").append(rule.times == 1 ? "once"
                                                : std::to_string(rule.times).append(" times"));
    }
    text.append(rule.untilRecovery ? " until recovery" : "");
    if (rule.delay != 0) {
        text.append(" delay ").append(
            rule.delay == delayForever ? "forever" : std::to_string(rule.delay).append("ms"));
    }
    return text;
}

} // namespace board
