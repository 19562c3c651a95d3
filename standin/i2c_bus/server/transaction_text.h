// Turns transactions into log lines.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <cstdint>
#include <span>
#include <string>

namespace standin {

/// One transaction. A control transaction shows bus, command, every field, then result and reply:
///
///   /dev/i2c-5 get-property target=0x00 property=8 -> 2 value=0x00000011
///   /dev/i2c-20 remove-device target=0x51 -> -19 ENODEV
///
/// The text shows all 164 bytes: a byte outside the command's fields follows as "+OFFSET:BYTE"
/// unless it is zero. A malformed control request and a plain transfer are shown message by
/// message, each as "[ADDRESS FLAGS LENGTH: BYTES]". Read messages have bytes when they succeeded:
///
///   /dev/i2c-5 transfer [0x0050 0x0000 1: 05] [0x0050 0x0001 2: 45 45] -> 2
///   /dev/i2c-5 transfer [0x0051 0x0001 2] -> -6 ENXIO
///   /dev/i2c-5 control [0x0000 0x0080 2: AA BB] -> -90 EMSGSIZE
///
/// A flag that a kernel adds, I2C_M_DMA_SAFE, is not shown.
///
/// @param result  result of the transfer; a failure is a negative errno
[[nodiscard]] std::string transactionText(std::uint32_t bus, std::span<const i2c_msg> messages,
                                          int result);

} // namespace standin
