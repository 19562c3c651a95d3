// What holds for the state of the bus driver's core at any time.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

namespace zolt::fuzz {

/// Requires that all tables are within their bounds, that each entry is there once, and that each
/// one refers to a bus and a device that exist.
void requireSound(const BusCore& core);

} // namespace zolt::fuzz
