// Fault rules: one line of words names the calls that fail or take long, and how they end.
//
// faultRuleHelp() and faultTimingHelp() list the rules. The second word of a rule is its subject.
// All words behind the subject, and behind COMMAND and SELECTOR, may come in any order.
//
// Rules are asked from the last to the first. A rule that fits a call answers in one of three ways:
//
//   not yet due  'after N' lets the call pass. The call is one of the N.
//   used up      'N times' have passed, or the bus has been recovered.
//   it applies   The call is one of 'N times'. No earlier rule is asked, so none counts the call.
//
// In the first two cases the next earlier rule is asked. All processes of the command count
// together.
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

/// The default status. The platform's libraries return it when the hardware does not answer.
constexpr std::int32_t noAnswer = -1;
constexpr std::uint16_t lastByte = 0xFFFF; ///< of every object of the HAL, and beyond its end
constexpr std::uint32_t delayForever = 0xFFFFFFFF; ///< the delay of a call that never comes back
constexpr std::uint32_t longestDelay = 3'600'000;  ///< in milliseconds
constexpr std::int32_t mostCalls = 2'147'483'647;  ///< of 'after' and 'times'

struct FaultRule {
    FaultKind kind = FaultKind::namedRead;
    std::string subject{};   ///< pattern, name or path
    std::uint16_t first = 0; ///< raw-read: first address; hal-read: first byte of the object
    std::uint16_t last = 0;  ///< raw-read: last address; hal-read: last byte, or lastByte
    std::int32_t status = 0; ///< what the failing call returns, or an errno; 0: it only takes long
    std::string error{};     ///< name of the D-Bus error that answers the call; may be empty
    std::uint32_t after = 0; ///< number of fitting calls that pass before the rule applies
    std::uint32_t times = 0; ///< number of calls to which the rule applies; 0: all
    bool untilRecovery = false;              ///< the rule ends with the first recovery of its bus
    std::uint32_t delay = 0;                 ///< of the call, in milliseconds; or delayForever
    std::uint32_t bus = 0;                   ///< of i2c-open and i2c-ioctl
    std::uint32_t operation = 0;             ///< operation that fails, by the bus driver's number
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

/// One rule, or one word of a rule, for people: how to write it, and its effect.
struct FaultRuleHelp {
    std::string_view usage;   ///< one line without a newline; capitals stand for the caller's words
    std::string_view meaning; ///< one sentence
};

/// All rules, in the order in which the documents list them. TIMING stands for any of the words of
/// faultTimingHelp().
[[nodiscard]] std::span<const FaultRuleHelp> faultRuleHelp();

/// The words that say when a rule applies, and how long the call takes.
[[nodiscard]] std::span<const FaultRuleHelp> faultTimingHelp();

/// Whether a rule fits a name. A named-read compares its pattern, all others their subject.
[[nodiscard]] bool fits(const FaultRule& rule, const std::string& name);

} // namespace board
