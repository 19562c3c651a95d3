// Faults of the bus core for tests.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <cstdint>

namespace standin {

/// A fault that applies to each operation of its kind on the bus. A test changes the other fields.
inline BusCoreFault busFault(std::uint32_t bus, std::uint32_t operation, int error) {
    BusCoreFault fault{};
    fault.bus = bus;
    fault.operation = operation;
    fault.anySelector = true;
    fault.error = error;
    return fault;
}

/// A fault that delays each operation of its kind and does not fail it.
inline BusCoreFault busDelay(std::uint32_t bus, std::uint32_t operation,
                             std::uint32_t milliseconds) {
    BusCoreFault fault = busFault(bus, operation, 0);
    fault.delay = milliseconds;
    return fault;
}

} // namespace standin
