// Recovery of an I2C bus that hangs: option 15.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

enum BusRecoveryMode : std::uint32_t {
    I2C_CP_MODE_TYPE_RESET_STOP = 96,
    I2C_CP_MODE_TYPE_RESET_HOLD_CLOCK_LOW = 97,
    I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL = 98,
};

/// Asks the driver for one step of a recovery and prints the result.
///
/// @param bus  the N of /dev/i2c-N.
/// @return statusDone; statusNothingToShow when the bus cannot be opened or the driver refuses.
Status busRecoveryStep(std::int32_t bus, BusRecoveryMode mode);

/// Option 15: asks for the bus and runs the steps of all three modes, even when one fails.
/// @return the last step's result; statusNothingToShow for an invalid input.
Status performBusRecovery();

} // namespace zolt
