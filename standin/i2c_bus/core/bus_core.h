// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The behaviour of the I2C bus driver, for any program or kernel module that serves requests.
//
// One struct holds all state in tables of fixed size. The caller provides the struct; the core
// allocates no memory and uses no file, socket or lock. The caller passes the messages of one
// I2C_RDWR at a time, and hands out read bytes only when the transfer succeeded. Results are those
// of the kernel: 0 or a count, or a negative error number.
//
// The core knows no time. A fault may delay an operation: the core performs the operation at once,
// and the caller hands out the result when the delay is over. The caller may serve other operations
// in the meantime.
//
// The state consists of:
//   buses       the board's own, and index nodes, each of which is a bus behind another bus
//   devices     at addresses of a bus, with a memory for plain transfers, a device node, or both
//   properties  by bus, target and ID; target 0 is the bus itself
//   faults      operations that fail or take long
#pragma once

#include "standin/i2c_bus/core/control_record.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    BUS_CORE_BUSES = 256,
    BUS_CORE_DEVICES = 1024,
    BUS_CORE_PROPERTIES = 4096,
    BUS_CORE_FAULTS = 256,

    BUS_CORE_HIGHEST_BUS = 1048575,  ///< Linux has no minor number for a bus device beyond this
    BUS_CORE_HIGHEST_ADDRESS = 0x7F, ///< addresses have 7 bits
    BUS_CORE_MESSAGES = 42,          ///< most messages of one transfer, as in the kernel
    BUS_CORE_MESSAGE_LENGTH = 8192,  ///< most bytes of one message, as in the kernel
    BUS_CORE_BUS_NODE = 0,           ///< the bus itself, as a target
};

// First word of the reply to a create request.
enum BusCoreNodeStatus {
    BUS_CORE_NODE_CREATED = 0,
    BUS_CORE_NODE_USED = 1, ///< the index node existed already
};

struct BusCoreBus {
    uint32_t number; ///< the N of /dev/i2c-N
    bool isIndexNode;
    uint32_t parent; ///< only for an index node, like index and typeName
    uint32_t index;
    char typeName[CONTROL_TEXT_SIZE];
    bool clockHeld; ///< a recovery is under way, and no device answers
};

struct BusCoreDevice {
    uint32_t bus;
    uint32_t address;
    bool hasNode;
    uint32_t index; ///< of the node, like typeName
    char typeName[CONTROL_TEXT_SIZE];
    uint8_t* memory; ///< the caller's memory for plain transfers; may be null
    uint32_t memorySize;
    uint32_t pointerWidth; ///< bytes of its register pointer, 1 or 2
    uint32_t pointer;
    bool readOnly; ///< accepts writes and drops them
};

struct BusCoreProperty {
    uint32_t bus;
    uint32_t target;
    uint32_t id;
    uint32_t value;
};

// Operations that can fail besides the commands of the control record.
enum BusCoreOperation {
    BUS_CORE_PLAIN = 0, ///< a message to a device
    BUS_CORE_OPEN = 1,
};

// The delay of an operation that never ends. The core does not perform the operation, and the
// caller never hands out its result.
#define BUS_CORE_FOREVER 0xFFFFFFFFU

// A fault: a well-formed operation fails or takes long. The bus need not exist yet.
//
// The core asks the faults that fit an operation from the last to the first. The first one that is
// due applies. A fault counts each operation for which it is asked.
struct BusCoreFault {
    uint32_t bus;
    uint32_t operation; ///< a ControlCommand, or one of the above
    bool anySelector;
    uint32_t selector;  ///< property ID of commands 4 and 5, target of 6 and 7, mode of 8, address
                        ///< of a plain message
    int error;          ///< errno; 0: the operation only takes long
    uint32_t delay;     ///< in milliseconds, or BUS_CORE_FOREVER
    uint32_t after;     ///< number of operations that pass before the fault is due
    uint32_t times;     ///< number of operations to which the fault applies; 0: all of them
    bool untilRecovery; ///< the fault ends with the first recovery of its bus
    bool isOver;        ///< used up, or the bus has been recovered
};

struct BusCore {
    uint32_t busCount;
    uint32_t deviceCount;
    uint32_t propertyCount;
    uint32_t faultCount;
    uint32_t delay; ///< of the last busCoreOpen() or busCoreTransfer(): in milliseconds, or
                    ///< BUS_CORE_FOREVER
    struct BusCoreBus buses[BUS_CORE_BUSES];
    struct BusCoreDevice devices[BUS_CORE_DEVICES];
    struct BusCoreProperty properties[BUS_CORE_PROPERTIES];
    struct BusCoreFault faults[BUS_CORE_FAULTS];
};

// Empties the state.
void busCoreInit(struct BusCore* core);

// These functions describe a board. Each returns 0, -ENOSPC when the table is full, -EINVAL for a
// number out of range, -EEXIST for an entry that exists already, or -ENODEV for a bus or target
// that does not exist. Texts are cut to 15 characters.
int busCoreAddBus(struct BusCore* core, uint32_t number);
int busCoreAddIndexNode(struct BusCore* core, uint32_t number, uint32_t parent, uint32_t index,
                        const char* typeName);
int busCoreAddMemory(struct BusCore* core, uint32_t bus, uint32_t address, uint8_t* memory,
                     uint32_t size, uint32_t pointerWidth, bool readOnly);
int busCoreAddDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address, uint32_t index,
                         const char* typeName);
int busCoreSetProperty(struct BusCore* core, uint32_t bus, uint32_t target, uint32_t id,
                       uint32_t value);
int busCoreAddFault(struct BusCore* core, const struct BusCoreFault* fault);

// These functions find an entry. Each returns null when there is none.
struct BusCoreBus* busCoreFindBus(struct BusCore* core, uint32_t number);
struct BusCoreDevice* busCoreFindDevice(struct BusCore* core, uint32_t bus, uint32_t address);
struct BusCoreProperty* busCoreFindProperty(struct BusCore* core, uint32_t bus, uint32_t target,
                                            uint32_t id);

// Removes a device node, and the device too unless it has memory. Returns -ENODEV without a node.
int busCoreRemoveDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address);

// Opens a bus. Returns 0, -ENOENT when there is no such bus, or the error of a fault.
int busCoreOpen(struct BusCore* core, uint32_t bus);

// Whether a bus exists: returns 0 or -ENOENT. A bus that refuses to open exists, unless the error
// is ENOENT. No fault counts the look or delays it.
int busCoreLook(struct BusCore* core, uint32_t bus);

// Performs one I2C_RDWR on an open bus. A fault counts it as one operation, even if several of its
// plain messages fit. The transfer then fails at the first message that fits. A successful request
// of RECOVERY_CLOCK_UNRAVEL recovers the bus.
//
// Message flags may include I2C_M_DMA_SAFE, which a kernel adds. Returns the message count, or:
//   -EINVAL     message count or length out of bounds, control and plain messages mixed, a control
//               request with a wrong magic, flag, address, message count, or field
//   -EMSGSIZE   a control record or a reply of a wrong length
//   -EOPNOTSUPP an unknown command, or a message flag that is not supported
//   -ENODEV     no such bus; no such device as the target of a control request
//   -ENXIO      no device answers a plain message
//   -ENOENT     the target has no such property
//   -EEXIST     the device node exists already
//   -ENOSPC     no room for another node
//   -ETIMEDOUT  a plain message while a recovery holds the clock
//   or the error of a fault.
int busCoreTransfer(struct BusCore* core, uint32_t bus, struct i2c_msg* messages, uint32_t count);

#ifdef __cplusplus
}
#endif
