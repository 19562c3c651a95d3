// Turns control transactions into log lines.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <cstdint>
#include <span>
#include <string>

namespace standin {

/// Whether a transfer is a control request, well-formed or not.
[[nodiscard]] bool isControlTransaction(std::span<const i2c_msg> messages);

/// One control transaction: bus, command, every field, then result and reply:
///
///   /dev/i2c-5 get-property target=0x00 property=8 -> 2 value=0x00000011
///   /dev/i2c-20 remove-device target=0x51 -> -19 ENODEV
///
/// The text shows all 164 bytes: a byte outside the command's fields follows as "+OFFSET:BYTE"
/// unless it is zero. A malformed request is shown message by message, as
/// "control [ADDRESS FLAGS LENGTH: BYTES]".
///
/// @param result  result of the transfer; a failure is a negative errno
[[nodiscard]] std::string transactionText(std::uint32_t bus, std::span<const i2c_msg> messages,
                                          int result);

} // namespace standin
