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
//   i2c-open BUS [error ERRNO]
//       the bus cannot be opened
//   i2c-ioctl BUS COMMAND [SELECTOR] [error ERRNO]
//       requests of that command on the bus; the selector is the property of update-property and
//       get-property, the target of create-node and remove-device, the mode of recover-bus, the
//       address of plain transfers
//   sysinfo TYPE [status N]
//       the parser has nothing about that device type
//
// The same words stand in a board description and behind zolt_sim's --fault.
#pragma once

#include <cstdint>
#include <optional>
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
    i2cOpen,
    i2cIoctl,
    sysinfo,
};

struct FaultRule {
    FaultKind kind = FaultKind::namedRead;
    std::string subject{};       ///< pattern or name
    std::uint16_t first = 0;     ///< raw-read: first address
    std::uint16_t last = 0;      ///< raw-read: last address
    std::int32_t status = 0;     ///< what the failing call returns, or its errno; never 0
    std::string error{};         ///< name of the error with which a call is answered
    bool once = false;           ///< only the first time; afterwards all is well
    std::uint32_t bus = 0;       ///< of i2c-open and i2c-ioctl
    std::uint32_t operation = 0; ///< what it strikes there, as the bus driver numbers it
    std::optional<std::uint32_t> selector{}; ///< and for what alone
    std::uint8_t deviceType = 0;             ///< of sysinfo

    bool operator==(const FaultRule&) const = default;
};

/// Says what is wrong with a rule, without the rule.
class FaultRuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads one rule. @throw FaultRuleError
[[nodiscard]] FaultRule parseFaultRule(std::string_view text);

/// Whether a rule's subject is this name, or for named-read a pattern that fits it.
[[nodiscard]] bool fits(const FaultRule& rule, const std::string& name);

} // namespace standin
