// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The control record as the bus driver reads it.
//
// A request writes 164 bytes to address 0, with a message flag of the driver's own. A number is
// unsigned, with 32 bits, little-endian. A text has 16 bytes and is NUL-terminated.
//
//     0  magic, the bytes "TESK"      4  command
//
//   4 update property                 6 create node (an index node when the target is 0)
//     8  index                         18  index
//    12  target address                30  property 10 of the bus
//    16  property value                38  device part: for a device node the numbers 16, 0, 0,
//    20  property ID                       100, 256, 40, 0, 0; for an index node eight zeros
//    24  device-type name              70  target address
//   5 get property                     74  property 8 of the bus
//     8  target address                78  device-type name
//    12  property ID                   94  device path of the bus, for a device node
//       reply: 4 bytes, the value         reply: 8 bytes, node status and bus number
//   8 recover bus                     7 remove device
//     8  recovery mode                  8  target address
#pragma once

#include "standin/i2c_bus/core/freestanding.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    CONTROL_FLAG = 0x0080, ///< marks a control message; Linux does not use this flag
    CONTROL_RECORD_SIZE = 164,
    CONTROL_TEXT_SIZE = 16,
};

enum ControlCommand {
    CONTROL_UPDATE_PROPERTY = 4,
    CONTROL_GET_PROPERTY = 5,
    CONTROL_CREATE_NODE = 6,
    CONTROL_REMOVE_DEVICE = 7,
    CONTROL_RECOVER_BUS = 8,
};

enum ControlOffset {
    CONTROL_COMMAND = 4,
    UPDATE_INDEX = 8,
    UPDATE_TARGET = 12,
    UPDATE_VALUE = 16,
    UPDATE_PROPERTY = 20,
    UPDATE_TYPE_NAME = 24,
    GET_TARGET = 8,
    GET_PROPERTY = 12,
    CREATE_INDEX = 18,
    CREATE_PROPERTY_10 = 30,
    CREATE_DEVICE_PART = 38,
    CREATE_TARGET = 70,
    CREATE_PROPERTY_8 = 74,
    CREATE_TYPE_NAME = 78,
    CREATE_DEVICE_PATH = 94,
    REMOVE_TARGET = 8,
    RECOVER_MODE = 8,
};

enum RecoveryMode {
    RECOVERY_RESET_STOP = 96,
    RECOVERY_HOLD_CLOCK_LOW = 97,
    RECOVERY_CLOCK_UNRAVEL = 98,
};

// Whether the 164 bytes at record begin with the magic.
bool controlHasMagic(const uint8_t* record);

// Read or write a number of a record or a reply.
uint32_t controlNumber(const uint8_t* bytes, uint32_t offset);
void controlSetNumber(uint8_t* bytes, uint32_t offset, uint32_t value);

#ifdef __cplusplus
}
#endif
