// Fault rules in their own words.
#pragma once

#include "board/fault_rule.h"

#include <string>
#include <string_view>

namespace board {

/// The first word of a rule: "named-read".
[[nodiscard]] std::string_view faultWord(FaultKind kind);

/// The command of an i2c-ioctl rule: "plain". @param operation  of such a rule
[[nodiscard]] std::string_view commandWord(std::uint32_t operation);

/// A rule as parseFaultRule() reads it.
[[nodiscard]] std::string faultRuleText(const FaultRule& rule);

} // namespace board
