// Performs SMBus accesses as plain transfers.
//
// The kernel does the same, with the same messages, for an adapter that can only transfer messages.
#pragma once

#include "standin/i2c_bus/wire.h"

#include <cstdint>
#include <functional>
#include <linux/i2c.h>
#include <span>

namespace standin {

/// Performs one transfer on a bus, with the result of busCoreTransfer().
using Transfer = std::function<int(std::span<i2c_msg> messages)>;

/// Performs an access to @p address on a bus.
///
/// @param transfer  called once, or not at all when the access is refused.
/// @param flags     flags of all messages
/// @param access    kind, command and data; read bytes replace the data.
/// @return 0, or a negative errno: that of the transfer, -EOPNOTSUPP for an unknown kind, -EINVAL
///         for a block of no bytes or of more than 32.
int smbusAccess(const Transfer& transfer, std::uint16_t address, std::uint16_t flags,
                WireSmbus& access);

} // namespace standin
