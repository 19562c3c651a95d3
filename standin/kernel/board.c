// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// A board: its tables come from a process, its memories are the kernel's.
#include "standin/kernel/internal.h"

#include <linux/mm.h>
#include <linux/slab.h>
#include <linux/uaccess.h>

enum {
    LARGEST_MEMORY = 0x10000, // a register pointer has 2 bytes at most
};

struct Board* boardNew(void) {
    struct Board* board = kvzalloc(sizeof(*board), GFP_KERNEL);
    if (board == NULL) {
        return NULL;
    }
    board->core = kvzalloc(sizeof(*board->core), GFP_KERNEL);
    if (board->core == NULL) {
        kvfree(board);
        return NULL;
    }
    board->openings = kvzalloc(sizeof(*board->openings), GFP_KERNEL);
    if (board->openings == NULL) {
        kvfree(board->core);
        kvfree(board);
        return NULL;
    }
    busCoreInit(board->core);
    busCoreInit(board->openings);
    kref_init(&board->references);
    mutex_init(&board->lock);
    mutex_init(&board->waitingLock);
    init_waitqueue_head(&board->changed);
    return board;
}

static void boardFree(struct kref* references) {
    struct Board* board = container_of(references, struct Board, references);
    for (uint32_t i = 0; i < board->core->deviceCount; ++i) {
        kvfree(board->core->devices[i].memory);
    }
    kvfree(board->openings);
    kvfree(board->core);
    kvfree(board);
}

void boardGet(struct Board* board) {
    kref_get(&board->references);
}

void boardPut(struct Board* board) {
    kref_put(&board->references, boardFree);
}

static int takeBuses(struct BusCore* core, const struct BusCore* given) {
    for (uint32_t i = 0; i < given->busCount; ++i) {
        const struct BusCoreBus* bus = &given->buses[i];
        const int result = bus->isIndexNode ? busCoreAddIndexNode(core, bus->number, bus->parent,
                                                                  bus->index, bus->typeName)
                                            : busCoreAddBus(core, bus->number);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

static int takeMemory(struct BusCore* core, const struct BusCoreDevice* device) {
    uint8_t* memory = NULL;
    int result = 0;
    if (device->memorySize == 0 || device->memorySize > LARGEST_MEMORY) {
        return -EINVAL;
    }
    memory = vmemdup_user((const void __user*)device->memory, device->memorySize);
    if (IS_ERR(memory)) {
        return (int)PTR_ERR(memory);
    }
    result = busCoreAddMemory(core, device->bus, device->address, memory, device->memorySize,
                              device->pointerWidth, device->readOnly);
    if (result != 0) {
        kvfree(memory);
    }
    return result;
}

static int takeDevices(struct BusCore* core, const struct BusCore* given) {
    for (uint32_t i = 0; i < given->deviceCount; ++i) {
        const struct BusCoreDevice* device = &given->devices[i];
        int result = device->memory == NULL ? 0 : takeMemory(core, device);
        if (result == 0 && device->hasNode) {
            result = busCoreAddDeviceNode(core, device->bus, device->address, device->index,
                                          device->typeName);
        }
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

static int takeProperties(struct BusCore* core, const struct BusCore* given) {
    for (uint32_t i = 0; i < given->propertyCount; ++i) {
        const struct BusCoreProperty* property = &given->properties[i];
        const int result = busCoreSetProperty(core, property->bus, property->target, property->id,
                                              property->value);
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

// An open cannot wait: see open_faults.c.
static int checkFault(const struct BusCoreFault* fault) {
    const bool isDelayedOpen = fault->operation == BUS_CORE_OPEN && fault->delay != 0;
    return fault->error > MAX_ERRNO || isDelayedOpen ? -EINVAL : 0;
}

static int takeFaults(struct BusCore* core, const struct BusCore* given) {
    for (uint32_t i = 0; i < given->faultCount; ++i) {
        int result = checkFault(&given->faults[i]);
        if (result == 0) {
            result = busCoreAddFault(core, &given->faults[i]);
        }
        if (result != 0) {
            return result;
        }
    }
    return 0;
}

// The functions of the core check every entry, so the board's tables are as sound as any others.
static int takeTables(struct BusCore* core, const struct BusCore* given) {
    int result = 0;
    if (given->busCount > BUS_CORE_BUSES || given->deviceCount > BUS_CORE_DEVICES ||
        given->propertyCount > BUS_CORE_PROPERTIES || given->faultCount > BUS_CORE_FAULTS) {
        return -EINVAL;
    }
    result = takeBuses(core, given);
    if (result == 0) {
        result = takeDevices(core, given);
    }
    if (result == 0) {
        result = takeProperties(core, given);
    }
    return result == 0 ? takeFaults(core, given) : result;
}

int boardTake(struct Board* board, const struct BusCore __user* tables) {
    struct BusCore* given = vmemdup_user(tables, sizeof(*given));
    int result = 0;
    if (IS_ERR(given)) {
        return (int)PTR_ERR(given);
    }
    result = takeTables(board->core, given);
    kvfree(given);
    return result;
}

int boardGive(const struct Board* board, struct BusCore __user* tables) {
    struct BusCore* copy = kvmalloc(sizeof(*copy), GFP_KERNEL);
    unsigned long left = 0;
    if (copy == NULL) {
        return -ENOMEM;
    }
    memcpy(copy, board->core, sizeof(*copy));
    for (uint32_t i = 0; i < BUS_CORE_DEVICES; ++i) {
        copy->devices[i].memory = NULL; // no process may learn the kernel's addresses
    }
    left = copy_to_user(tables, copy, sizeof(*copy));
    kvfree(copy);
    return left == 0 ? 0 : -EFAULT;
}
