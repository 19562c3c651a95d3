// SMBus accesses as the plain transfers that they are on the wire.
//
// The kernel does the same for an adapter that knows transfers alone, with the same messages.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"
#include "standin/i2c_bus/wire.h"

#include <cstdint>

namespace standin {

/// Performs an access to @p address on a bus.
///
/// @param access  kind, command and data; what was read replaces the data.
/// @return 0, or a negative errno: busCoreTransfer()'s, -EOPNOTSUPP for a kind whose length comes
///         from the device, -EINVAL for a length out of bounds.
int smbusAccess(BusCore& core, std::uint32_t bus, std::uint16_t address, WireSmbus& access);

} // namespace standin
