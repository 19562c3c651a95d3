// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// Transfers: tells control requests from plain transfers, and performs the plain ones.
#include "standin/i2c_bus/core/internal.h"

static void writeDevice(struct BusCoreDevice* device, const uint8_t* bytes, uint32_t count) {
    uint32_t i = 0;
    if (count > 0) {
        device->pointer = 0;
    }
    for (; i < count && i < device->pointerWidth; ++i) {
        device->pointer = device->pointer << 8 | bytes[i];
    }
    for (; i < count; ++i, ++device->pointer) {
        if (!device->readOnly) {
            device->memory[device->pointer % device->memorySize] = bytes[i];
        }
    }
}

static void readDevice(struct BusCoreDevice* device, uint8_t* bytes, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i, ++device->pointer) {
        bytes[i] = device->memory[device->pointer % device->memorySize];
    }
}

int busCorePlain(struct BusCore* core, const struct BusCoreBus* bus, struct i2c_msg* messages,
                 uint32_t count) {
    const struct BusCoreFault* fault = NULL;
    if (bus->clockHeld) {
        return -ETIMEDOUT;
    }
    fault = busCorePlainFaultOf(core, bus->number, messages, count);
    for (uint32_t i = 0; i < count; ++i) {
        struct i2c_msg* message = &messages[i];
        struct BusCoreDevice* device = busCoreFindDevice(core, bus->number, message->addr);
        if (fault != NULL && busCoreSelects(fault, message->addr)) {
            core->delay = fault->delay;
            if (fault->error != 0) {
                return -fault->error;
            }
        }
        if ((message->flags & ~(I2C_M_RD | I2C_M_DMA_SAFE)) != 0) {
            return -EOPNOTSUPP;
        }
        if (device == NULL || device->memory == NULL) {
            return -ENXIO;
        }
        if ((message->flags & I2C_M_RD) != 0) {
            readDevice(device, message->buf, message->len);
        } else {
            writeDevice(device, message->buf, message->len);
        }
    }
    return (int)count;
}

int busCoreTransfer(struct BusCore* core, uint32_t bus, struct i2c_msg* messages, uint32_t count) {
    struct BusCoreBus* found = busCoreFindBus(core, bus);
    bool isControl = false;
    core->delay = 0;
    if (found == NULL) {
        return -ENODEV;
    }
    if (count == 0 || count > BUS_CORE_MESSAGES) {
        return -EINVAL;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (messages[i].len > BUS_CORE_MESSAGE_LENGTH) {
            return -EINVAL;
        }
        isControl = isControl || (messages[i].flags & CONTROL_FLAG) != 0;
    }
    return isControl ? busCoreControl(core, found, messages, count)
                     : busCorePlain(core, found, messages, count);
}
