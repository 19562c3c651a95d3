// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// What an adapter of the bus driver can do. It transfers messages; the kernel, or its stand-in,
// makes SMBus accesses of them. An access whose length the device would give is not offered.
#pragma once

#include "standin/i2c_bus/core/freestanding.h"

#define BUS_CORE_FUNCTIONS                                                                         \
    (I2C_FUNC_I2C | I2C_FUNC_SMBUS_QUICK | I2C_FUNC_SMBUS_BYTE | I2C_FUNC_SMBUS_BYTE_DATA |        \
     I2C_FUNC_SMBUS_WORD_DATA | I2C_FUNC_SMBUS_PROC_CALL | I2C_FUNC_SMBUS_WRITE_BLOCK_DATA |       \
     I2C_FUNC_SMBUS_I2C_BLOCK)
