// Fault rules: one line of words names the calls that fail, and how they fail.
//
//   named-read PATTERN [status N] [once]
//       reads of a register whose name fits the pattern (* ? [...] as in a shell)
//   raw-read ADDRESS[-ADDRESS] [status N] [once]
//       raw reads that touch one of the addresses
//   hal-object NAME [once]
//       the HAL has no object of that name
//   hal-read NAME [status N] [once]
//       bulk reads through that object
//   bus absent
//       there is no system bus
//   service absent
//       there is a system bus, but no service on it
//   object PATH [error NAME]
//       the service answers calls on that object with an error
//   i2c-open BUS [error ERRNO]
//       the bus cannot be opened
//   i2c-ioctl BUS COMMAND [SELECTOR] [error ERRNO]
//       requests of that command on the bus; the selector limits the rule to one property of
//       update-property and get-property, one target of create-node and remove-device, one mode of
//       recover-bus, or one address of plain transfers
//   sysinfo TYPE [status N]
//       the parser fails for that device type
//
// A board description and zolt_sim's --fault use the same rules.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace board {

enum class FaultKind : std::uint8_t {
    namedRead,
    rawRead,
    halObject,
    halRead,
    bus,
    service,
    object,
    i2cOpen,
    i2cIoctl,
    sysinfo,
};

struct FaultRule {
    FaultKind kind = FaultKind::namedRead;
    std::string subject{};       ///< pattern, name or path
    std::uint16_t first = 0;     ///< raw-read: first address
    std::uint16_t last = 0;      ///< raw-read: last address
    std::int32_t status = 0;     ///< what the failing call returns, or an errno; never 0
    std::string error{};         ///< name of the D-Bus error that answers the call; may be empty
    bool once = false;           ///< only the first fitting call fails
    std::uint32_t bus = 0;       ///< of i2c-open and i2c-ioctl
    std::uint32_t operation = 0; ///< operation that fails, by the bus driver's number
    std::optional<std::uint32_t> selector{}; ///< none: any
    std::uint8_t deviceType = 0;             ///< of sysinfo

    bool operator==(const FaultRule&) const = default;
};

/// A malformed rule; what() gives the reason, without the rule.
class FaultRuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads one rule. @throw FaultRuleError
[[nodiscard]] FaultRule parseFaultRule(std::string_view text);

/// One rule for people: how to write it, and its effect.
struct FaultRuleHelp {
    std::string_view usage;   ///< one line without a newline; capitals stand for the caller's words
    std::string_view meaning; ///< one sentence
};

/// All rules, in the order in which the documents list them.
[[nodiscard]] std::span<const FaultRuleHelp> faultRuleHelp();

/// Whether a rule fits a name. A named-read compares its pattern, all others their subject.
[[nodiscard]] bool fits(const FaultRule& rule, const std::string& name);

} // namespace board
