#include "board/fault_rule.h"

namespace board {

namespace {

constexpr FaultRuleHelp ruleHelp[] = {
    {"named-read PATTERN [status N] [TIMING]...",
     "Reads of registers whose name fits the shell pattern fail."},
    {"raw-read ADDRESS[-ADDRESS] [status N] [TIMING]...",
     "Raw reads that touch one of the addresses fail."},
    {"hal-object NAME [TIMING]...", "The HAL has no object NAME."},
    {"hal-read NAME [BYTE[-BYTE]] [status N] [TIMING]...",
     "Bulk reads through the HAL object NAME, or those that touch one of the bytes, fail."},
    {"bus absent", "There is no system bus."},
    {"service absent", "There is a system bus, but no service on it."},
    {"object PATH [error NAME] [TIMING]...",
     "The service answers calls on the object PATH with an error."},
    {"i2c-open BUS [error ERRNO] [TIMING]...", "The bus /dev/i2c-BUS cannot be opened."},
    {"i2c-ioctl BUS COMMAND [SELECTOR] [error ERRNO] [TIMING]...",
     "The bus driver refuses requests of this command on the bus."},
    {"sysinfo TYPE [status N] [TIMING]...", "The topology of the device type cannot be parsed."},
};

constexpr FaultRuleHelp timings[] = {
    {"once", "The rule applies to one call: the same as '1 times'."},
    {"N times", "The rule applies to N calls, and is used up then."},
    {"after N", "The rule lets N calls pass before it applies."},
    {"until recovery", "The rule of a bus applies until a recover-bus request recovers the bus."},
    {"delay TIME", "The call takes TIME longer, like 250ms or 2s, and does not fail."},
    {"delay forever", "The call never comes back."},
    {"fail", "The call with a delay also fails, as it does with a status or an error."},
};

} // namespace

std::span<const FaultRuleHelp> faultRuleHelp() {
    return ruleHelp;
}

std::span<const FaultRuleHelp> faultTimingHelp() {
    return timings;
}

} // namespace board
