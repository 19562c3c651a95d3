// Performs SMBus accesses as plain transfers.
//
// The kernel does the same, with the same messages, for an adapter that can only transfer messages.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"
#include "standin/i2c_bus/wire.h"

#include <cstdint>

namespace standin {

/// Performs an access to @p address on a bus.
///
/// @param access  kind, command and data; read bytes replace the data.
/// @return 0, or a negative errno: busCoreTransfer()'s, -EOPNOTSUPP for an unknown kind or a block
///         whose length the device would give, -EINVAL for a block of more than 32 bytes.
int smbusAccess(BusCore& core, std::uint32_t bus, std::uint16_t address, WireSmbus& access);

} // namespace standin
