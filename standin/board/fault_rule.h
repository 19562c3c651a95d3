// Faults to order: one line of words that says what is to fail, and how.
//
//   named-read PATTERN [status N] [once]
//       reads by a name that fits the pattern (* ? [...] as in a shell)
//   raw-read ADDRESS[-ADDRESS] [status N] [once]
//       raw reads that touch one of the addresses
//   hal-object NAME [once]
//       the HAL has no object of that name
//   hal-read NAME [status N] [once]
//       bulk reads through that object
//   bus absent
//       there is no system bus
//   service absent
//       there is a bus, and no service on it
//   object PATH [error NAME]
//       the service answers calls on that object with an error
//
// The same words stand in a board description and behind zolt_sim's --fault.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace standin {

enum class FaultKind : std::uint8_t {
    namedRead,
    rawRead,
    halObject,
    halRead,
    bus,
    service,
    object,
};

struct FaultRule {
    FaultKind kind = FaultKind::namedRead;
    std::string subject{};   ///< pattern or name
    std::uint16_t first = 0; ///< raw-read: first address
    std::uint16_t last = 0;  ///< raw-read: last address
    std::int32_t status = 0; ///< what the failing call returns; never 0
    std::string error{};     ///< name of the error with which a call is answered
    bool once = false;       ///< only the first time; afterwards all is well

    bool operator==(const FaultRule&) const = default;
};

/// Says what is wrong with a rule, without the rule.
class FaultRuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads one rule. @throw FaultRuleError
[[nodiscard]] FaultRule parseFaultRule(std::string_view text);

} // namespace standin
