// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The core's tables: adds, finds and removes their entries.
#include "standin/i2c_bus/core/internal.h"

void busCoreInit(struct BusCore* core) {
    memset(core, 0, sizeof(*core));
}

// The bytes behind the terminator must be zero, because names are compared over all 16 bytes.
static void setName(char* name, const char* text) {
    uint32_t i = 0;
    memset(name, 0, CONTROL_TEXT_SIZE);
    for (; i < CONTROL_TEXT_SIZE - 1 && text[i] != '\0'; ++i) {
        name[i] = text[i];
    }
}

struct BusCoreBus* busCoreFindBus(struct BusCore* core, uint32_t number) {
    for (uint32_t i = 0; i < core->busCount; ++i) {
        if (core->buses[i].number == number) {
            return &core->buses[i];
        }
    }
    return NULL;
}

struct BusCoreDevice* busCoreFindDevice(struct BusCore* core, uint32_t bus, uint32_t address) {
    for (uint32_t i = 0; i < core->deviceCount; ++i) {
        if (core->devices[i].bus == bus && core->devices[i].address == address) {
            return &core->devices[i];
        }
    }
    return NULL;
}

struct BusCoreProperty* busCoreFindProperty(struct BusCore* core, uint32_t bus, uint32_t target,
                                            uint32_t id) {
    for (uint32_t i = 0; i < core->propertyCount; ++i) {
        struct BusCoreProperty* property = &core->properties[i];
        if (property->bus == bus && property->target == target && property->id == id) {
            return property;
        }
    }
    return NULL;
}

uint32_t busCoreNextBus(const struct BusCore* core) {
    uint32_t next = 0;
    for (uint32_t i = 0; i < core->busCount; ++i) {
        if (core->buses[i].number >= next) {
            next = core->buses[i].number + 1;
        }
    }
    return next;
}

int busCoreAddBus(struct BusCore* core, uint32_t number) {
    if (number > BUS_CORE_HIGHEST_BUS) {
        return -EINVAL;
    }
    if (busCoreFindBus(core, number) != NULL) {
        return -EEXIST;
    }
    if (core->busCount == BUS_CORE_BUSES) {
        return -ENOSPC;
    }
    core->buses[core->busCount] = (struct BusCoreBus){.number = number};
    ++core->busCount;
    return 0;
}

int busCoreAddIndexNode(struct BusCore* core, uint32_t number, uint32_t parent, uint32_t index,
                        const char* typeName) {
    struct BusCoreBus* bus = NULL;
    int result = 0;
    if (busCoreFindBus(core, parent) == NULL) {
        return -ENODEV;
    }
    result = busCoreAddBus(core, number);
    if (result != 0) {
        return result;
    }
    bus = busCoreFindBus(core, number);
    bus->isIndexNode = true;
    bus->parent = parent;
    bus->index = index;
    setName(bus->typeName, typeName);
    return 0;
}

// Finds the device at an address, or adds one. Null when the table is full.
static struct BusCoreDevice* deviceAt(struct BusCore* core, uint32_t bus, uint32_t address) {
    struct BusCoreDevice* device = busCoreFindDevice(core, bus, address);
    if (device == NULL && core->deviceCount < BUS_CORE_DEVICES) {
        device = &core->devices[core->deviceCount];
        ++core->deviceCount;
        *device = (struct BusCoreDevice){.bus = bus, .address = address};
    }
    return device;
}

static int checkPlace(struct BusCore* core, uint32_t bus, uint32_t address) {
    if (address == BUS_CORE_BUS_NODE || address > BUS_CORE_HIGHEST_ADDRESS) {
        return -EINVAL;
    }
    return busCoreFindBus(core, bus) == NULL ? -ENODEV : 0;
}

int busCoreAddMemory(struct BusCore* core, uint32_t bus, uint32_t address, uint8_t* memory,
                     uint32_t size, uint32_t pointerWidth, bool readOnly) {
    struct BusCoreDevice* device = NULL;
    const int result = checkPlace(core, bus, address);
    if (result != 0) {
        return result;
    }
    if (memory == NULL || (pointerWidth != 1 && pointerWidth != 2) || size == 0 ||
        size > (uint32_t)1 << (8 * pointerWidth)) {
        return -EINVAL;
    }
    device = deviceAt(core, bus, address);
    if (device == NULL) {
        return -ENOSPC;
    }
    if (device->memory != NULL) {
        return -EEXIST;
    }
    device->memory = memory;
    device->memorySize = size;
    device->pointerWidth = pointerWidth;
    device->readOnly = readOnly;
    return 0;
}

int busCoreCheckDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address) {
    const struct BusCoreDevice* device = busCoreFindDevice(core, bus, address);
    const int result = checkPlace(core, bus, address);
    if (result != 0) {
        return result;
    }
    if (device != NULL) {
        return device->hasNode ? -EEXIST : 0;
    }
    return core->deviceCount == BUS_CORE_DEVICES ? -ENOSPC : 0;
}

int busCoreAddDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address, uint32_t index,
                         const char* typeName) {
    struct BusCoreDevice* device = NULL;
    const int result = busCoreCheckDeviceNode(core, bus, address);
    if (result != 0) {
        return result;
    }
    device = deviceAt(core, bus, address);
    device->hasNode = true;
    device->index = index;
    setName(device->typeName, typeName);
    return 0;
}

static void forgetProperties(struct BusCore* core, uint32_t bus, uint32_t target) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < core->propertyCount; ++i) {
        const struct BusCoreProperty property = core->properties[i];
        if (property.bus != bus || property.target != target) {
            core->properties[kept] = property;
            ++kept;
        }
    }
    core->propertyCount = kept;
}

int busCoreRemoveDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address) {
    struct BusCoreDevice* device = busCoreFindDevice(core, bus, address);
    if (device == NULL || !device->hasNode) {
        return -ENODEV;
    }
    forgetProperties(core, bus, address);
    device->hasNode = false;
    if (device->memory == NULL) {
        --core->deviceCount;
        *device = core->devices[core->deviceCount];
    }
    return 0;
}

int busCoreSetProperty(struct BusCore* core, uint32_t bus, uint32_t target, uint32_t id,
                       uint32_t value) {
    struct BusCoreProperty* property = busCoreFindProperty(core, bus, target, id);
    if (busCoreFindBus(core, bus) == NULL ||
        (target != BUS_CORE_BUS_NODE && busCoreFindDevice(core, bus, target) == NULL)) {
        return -ENODEV;
    }
    if (property == NULL) {
        if (core->propertyCount == BUS_CORE_PROPERTIES) {
            return -ENOSPC;
        }
        property = &core->properties[core->propertyCount];
        ++core->propertyCount;
    }
    *property = (struct BusCoreProperty){.bus = bus, .target = target, .id = id, .value = value};
    return 0;
}

int busCoreAddFault(struct BusCore* core, const struct BusCoreFault* fault) {
    struct BusCoreFault* added = NULL;
    if (fault->error < 0 || (fault->error == 0 && fault->delay == 0)) {
        return -EINVAL;
    }
    if (core->faultCount == BUS_CORE_FAULTS) {
        return -ENOSPC;
    }
    added = &core->faults[core->faultCount];
    ++core->faultCount;
    *added = *fault;
    if (added->delay == BUS_CORE_FOREVER) {
        added->error = ETIMEDOUT; // keeps the core from performing the operation
    }
    return 0;
}

bool busCoreSelects(const struct BusCoreFault* fault, uint32_t selector) {
    return fault->anySelector || fault->selector == selector;
}

static bool isFor(const struct BusCoreFault* fault, uint32_t bus, uint32_t operation) {
    return fault->bus == bus && fault->operation == operation;
}

// Counts an operation. Returns whether the fault applies to the operation.
static bool isDue(struct BusCoreFault* fault) {
    if (fault->isOver) {
        return false;
    }
    if (fault->after > 0) {
        --fault->after;
        return false;
    }
    if (fault->times > 0) {
        --fault->times;
        fault->isOver = fault->times == 0;
    }
    return true;
}

int busCoreFaultOf(struct BusCore* core, uint32_t bus, uint32_t operation, uint32_t selector) {
    for (uint32_t i = core->faultCount; i > 0; --i) {
        struct BusCoreFault* fault = &core->faults[i - 1];
        if (isFor(fault, bus, operation) && busCoreSelects(fault, selector) && isDue(fault)) {
            core->delay = fault->delay;
            return fault->error;
        }
    }
    return 0;
}

static bool selectsOneOf(const struct BusCoreFault* fault, const struct i2c_msg* messages,
                         uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        if (busCoreSelects(fault, messages[i].addr)) {
            return true;
        }
    }
    return false;
}

const struct BusCoreFault* busCorePlainFaultOf(struct BusCore* core, uint32_t bus,
                                               const struct i2c_msg* messages, uint32_t count) {
    for (uint32_t i = core->faultCount; i > 0; --i) {
        struct BusCoreFault* fault = &core->faults[i - 1];
        if (isFor(fault, bus, BUS_CORE_PLAIN) && selectsOneOf(fault, messages, count) &&
            isDue(fault)) {
            return fault;
        }
    }
    return NULL;
}

void busCoreEndFaults(struct BusCore* core, uint32_t bus) {
    for (uint32_t i = 0; i < core->faultCount; ++i) {
        struct BusCoreFault* fault = &core->faults[i];
        fault->isOver = fault->isOver || (fault->untilRecovery && fault->bus == bus);
    }
}

int busCoreOpen(struct BusCore* core, uint32_t bus) {
    int fault = 0;
    core->delay = 0;
    fault = busCoreFaultOf(core, bus, BUS_CORE_OPEN, 0);
    if (fault != 0) {
        return -fault;
    }
    return busCoreFindBus(core, bus) == NULL ? -ENOENT : 0;
}

int busCoreLook(struct BusCore* core, uint32_t bus) {
    for (uint32_t i = core->faultCount; i > 0; --i) {
        const struct BusCoreFault* fault = &core->faults[i - 1];
        if (isFor(fault, bus, BUS_CORE_OPEN) && !fault->isOver && fault->after == 0) {
            if (fault->error != 0) {
                return fault->error == ENOENT ? -ENOENT : 0;
            }
            break;
        }
    }
    return busCoreFindBus(core, bus) == NULL ? -ENOENT : 0;
}
