// Reads any line as a fault rule. A rule that is accepted must be within its bounds, and its text
// must be the same rule. A complaint must be safe for a terminal and of bounded length.
#include "board/fault_rule.h"

#include "board/fault_rule_text.h"
#include "board/message_text.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"

namespace {

using zolt::fuzz::require;

void requireBounded(const board::FaultRule& rule) {
    require(rule.first <= rule.last);
    require(rule.delay == board::delayForever || rule.delay <= board::longestDelay);
    require(rule.after <= static_cast<std::uint32_t>(board::mostCalls));
    require(rule.times <= static_cast<std::uint32_t>(board::mostCalls));
    // A rule that does nothing would be a mistake of its writer.
    require(rule.status != 0 || rule.delay != 0 || rule.kind == board::FaultKind::object ||
            rule.kind == board::FaultKind::halObject || rule.kind == board::FaultKind::bus ||
            rule.kind == board::FaultKind::service);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const board::FaultRule rule = board::parseFaultRule(text);
        requireBounded(rule);
        require(board::parseFaultRule(board::faultRuleText(rule)) == rule);
        (void)board::fits(rule, rule.subject);
    } catch (const board::FaultRuleError& error) {
        constexpr std::size_t longest = 2'000;
        const std::string_view reason = error.what();
        require(!reason.empty() && reason.size() <= longest);
        require(board::printable(reason) == reason);
    }
    return 0;
}
