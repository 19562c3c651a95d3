#include "board/fault_rule.h"

namespace board {

namespace {

constexpr FaultRuleHelp rules[] = {
    {"named-read PATTERN [status N] [once]",
     "Reads of registers whose name fits the shell pattern fail."},
    {"raw-read ADDRESS[-ADDRESS] [status N] [once]",
     "Raw reads that touch one of the addresses fail."},
    {"hal-object NAME [once]", "The HAL has no object NAME."},
    {"hal-read NAME [status N] [once]", "Bulk reads through the HAL object NAME fail."},
    {"bus absent", "There is no system bus."},
    {"service absent", "There is a system bus, but no service on it."},
    {"object PATH [error NAME]", "The service answers calls on the object PATH with an error."},
    {"i2c-open BUS [error ERRNO]", "The bus /dev/i2c-BUS cannot be opened."},
    {"i2c-ioctl BUS COMMAND [SELECTOR] [error ERRNO]",
     "The bus driver refuses requests of this command on the bus."},
    {"sysinfo TYPE [status N]", "The topology of the device type cannot be parsed."},
};

} // namespace

std::span<const FaultRuleHelp> faultRuleHelp() {
    return rules;
}

} // namespace board
