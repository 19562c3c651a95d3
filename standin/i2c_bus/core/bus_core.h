// The I2C bus driver's behaviour, apart from whatever carries it.
//
// One struct holds all state, in tables of fixed size that the caller provides the room for; the
// core allocates nothing and knows no file, no socket and no lock. Whoever carries it hands over
// the messages of one I2C_RDWR at a time, and copies what was read back only when the transfer
// succeeded. Results are as in the kernel: 0 or a count, or a negative error number.
//
// What the driver knows: buses (those of the board, and index nodes, which are buses created at run
// time behind another one), devices at addresses of a bus (with memory that plain transfers reach,
// with a device node, or both), properties by bus, target and ID, where target 0 is the bus itself,
// and the faults it is to show.
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

    BUS_CORE_HIGHEST_BUS = 1048575,  ///< Linux has no minor number for a bus device beyond
    BUS_CORE_HIGHEST_ADDRESS = 0x7F, ///< addresses have 7 bits
    BUS_CORE_MESSAGES = 42,          ///< of one transfer, as the kernel has it
    BUS_CORE_MESSAGE_LENGTH = 8192,
    BUS_CORE_BUS_NODE = 0, ///< the bus itself, as a target
};

// First word of the reply to a create request.
enum BusCoreNodeStatus {
    BUS_CORE_NODE_CREATED = 0,
    BUS_CORE_NODE_USED = 1, ///< the index node was there already
};

struct BusCoreBus {
    uint32_t number; ///< the N of /dev/i2c-N
    bool isIndexNode;
    uint32_t parent; ///< of an index node, with the next two
    uint32_t index;
    char typeName[CONTROL_TEXT_SIZE];
    bool clockHeld; ///< in the middle of a recovery: no device answers
};

struct BusCoreDevice {
    uint32_t bus;
    uint32_t address;
    bool hasNode;
    uint32_t index; ///< of its node, with the next
    char typeName[CONTROL_TEXT_SIZE];
    uint8_t* memory; ///< what plain transfers read and write, owned by the caller; may be null
    uint32_t memorySize;
    uint32_t pointerWidth; ///< bytes of its register pointer, 1 or 2
    uint32_t pointer;
    bool readOnly; ///< takes writes without keeping them
};

struct BusCoreProperty {
    uint32_t bus;
    uint32_t target;
    uint32_t id;
    uint32_t value;
};

// What a fault can strike besides the commands of the control record.
enum BusCoreOperation {
    BUS_CORE_PLAIN = 0, ///< a message to a device
    BUS_CORE_OPEN = 1,
};

// An operation that fails, well-formed as it may be. The bus need not be there yet.
struct BusCoreFault {
    uint32_t bus;
    uint32_t operation; ///< a ControlCommand, or one of the above
    bool anySelector;
    uint32_t selector; ///< property ID of commands 4 and 5, target of 6 and 7, mode of 8, address
                       ///< of a plain message
    int error;         ///< errno
};

struct BusCore {
    uint32_t busCount;
    uint32_t deviceCount;
    uint32_t propertyCount;
    uint32_t faultCount;
    struct BusCoreBus buses[BUS_CORE_BUSES];
    struct BusCoreDevice devices[BUS_CORE_DEVICES];
    struct BusCoreProperty properties[BUS_CORE_PROPERTIES];
    struct BusCoreFault faults[BUS_CORE_FAULTS];
};

// Empties the state.
void busCoreInit(struct BusCore* core);

// Describing a board. Each returns 0, -ENOSPC when the table is full, -EINVAL for a number out of
// range, -EEXIST for what is there already, -ENODEV for a bus or target that is not. Texts beyond
// 15 characters are cut.
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

// Looking at it: null when there is none.
struct BusCoreBus* busCoreFindBus(struct BusCore* core, uint32_t number);
struct BusCoreDevice* busCoreFindDevice(struct BusCore* core, uint32_t bus, uint32_t address);
struct BusCoreProperty* busCoreFindProperty(struct BusCore* core, uint32_t bus, uint32_t target,
                                            uint32_t id);

// Takes a device node away, and the device with it unless it has memory. -ENODEV without one.
int busCoreRemoveDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address);

// Opens a bus: 0, -ENOENT when there is none, or what a fault says.
int busCoreOpen(struct BusCore* core, uint32_t bus);

// One I2C_RDWR on an open bus.
//
// Message flags may carry I2C_M_DMA_SAFE, which a kernel adds. Returns the message count, or:
//   -EINVAL     message count or length out of bounds, control and plain messages mixed, a control
//               request with a wrong magic, flag, address, message count, or field
//   -EMSGSIZE   a control record or a reply of another length than its command's
//   -EOPNOTSUPP unknown command, or a flag that no device here knows
//   -ENODEV     no such bus; no such device as the target of a control request
//   -ENXIO      no device answers a plain message
//   -ENOENT     the target has no such property
//   -EEXIST     the device node is there already
//   -ENOSPC     no room for another node
//   -ETIMEDOUT  a plain message while a recovery holds the clock
//   or what a fault says.
int busCoreTransfer(struct BusCore* core, uint32_t bus, struct i2c_msg* messages, uint32_t count);

#ifdef __cplusplus
}
#endif
