// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The control device of the kernel module: how zolt_sim puts a board into the kernel.
//
// A board lasts as long as zolt_sim keeps the control device open. There is one board at a time.
//
//   BUS_MODULE_LOAD   takes the board's tables, a struct BusCore, and registers an adapter for each
//                     bus and a client for each device node
//   read()            returns a transaction on one of the buses, whose caller waits until
//                     BUS_MODULE_DONE. Fails with EAGAIN when there is none; poll() waits for one.
//   BUS_MODULE_STATE  copies the board's tables, without the memories of its devices. Only while a
//                     transaction waits.
//   BUS_MODULE_DONE   lets the caller of the transaction go on
//
// One transaction waits at a time. Both sides are of one machine: they share its byte order and the
// layout of the structures.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <linux/ioctl.h>

#define BUS_MODULE_DEVICE "zolt_bus" // below /dev

#define BUS_MODULE_LOAD _IO('z', 1)
#define BUS_MODULE_STATE _IO('z', 2)
#define BUS_MODULE_DONE _IO('z', 3)

// The head of a transaction. After it come `count` message heads, then the bytes of all messages.
struct BusModuleTransaction {
    uint32_t bus;
    int32_t result; ///< as of busCoreTransfer()
    uint32_t count;
};

struct BusModuleMessage {
    uint16_t address;
    uint16_t flags;
    uint16_t length;
};

enum {
    BUS_MODULE_LONGEST =
        (int)(sizeof(struct BusModuleTransaction) +
              BUS_CORE_MESSAGES * (sizeof(struct BusModuleMessage) + BUS_CORE_MESSAGE_LENGTH)),
};
