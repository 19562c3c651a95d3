// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
#include "standin/i2c_bus/core/control_record.h"

bool controlHasMagic(const uint8_t* record) {
    return memcmp(record, "TESK", 4) == 0;
}

uint32_t controlNumber(const uint8_t* bytes, uint32_t offset) {
    const uint8_t* at = bytes + offset;
    return (uint32_t)at[0] | (uint32_t)at[1] << 8 | (uint32_t)at[2] << 16 | (uint32_t)at[3] << 24;
}

void controlSetNumber(uint8_t* bytes, uint32_t offset, uint32_t value) {
    for (uint32_t i = 0; i < 4; ++i) {
        bytes[offset + i] = (uint8_t)(value >> (8 * i));
    }
}
