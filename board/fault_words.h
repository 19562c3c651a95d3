// The words that fault rules begin with, and those of the I2C commands.
#pragma once

#include "board/fault_rule.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <cstdint>
#include <string_view>

namespace board {

struct FaultWord {
    std::string_view word;
    FaultKind kind;
};

constexpr FaultWord faultWords[] = {
    {"named-read", FaultKind::namedRead},
    {"raw-read", FaultKind::rawRead},
    {"hal-object", FaultKind::halObject},
    {"hal-read", FaultKind::halRead},
    {"bus", FaultKind::bus},
    {"service", FaultKind::service},
    {"object", FaultKind::object},
    {"i2c-open", FaultKind::i2cOpen},
    {"i2c-ioctl", FaultKind::i2cIoctl},
    {"sysinfo", FaultKind::sysinfo},
};

struct CommandWord {
    std::string_view word;
    std::uint32_t operation; ///< by the bus driver's number
};

constexpr CommandWord commandWords[] = {
    {"plain", BUS_CORE_PLAIN},
    {"update-property", CONTROL_UPDATE_PROPERTY},
    {"get-property", CONTROL_GET_PROPERTY},
    {"create-node", CONTROL_CREATE_NODE},
    {"remove-device", CONTROL_REMOVE_DEVICE},
    {"recover-bus", CONTROL_RECOVER_BUS},
};

} // namespace board
