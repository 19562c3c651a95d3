// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// Control requests: checks them and runs their commands.
#include "standin/i2c_bus/core/internal.h"

// A requester sends this value for a property that it could not query.
static const uint32_t unknownValue = 0xFFFFFFFF;

enum {
    PROPERTY_8 = 8,
    PROPERTY_10 = 10,
    DEVICE_PART_NUMBERS = 8,
};

// The numbers that come with each device node. The requester does not choose them.
static const uint32_t devicePart[DEVICE_PART_NUMBERS] = {16, 0, 0, 100, 256, 40, 0, 0};

static int checkTarget(struct BusCore* core, const struct BusCoreBus* bus, uint32_t target) {
    if (target != BUS_CORE_BUS_NODE && busCoreFindDevice(core, bus->number, target) == NULL) {
        return -ENODEV;
    }
    return 0;
}

static int findProperty(struct BusCore* core, const struct BusCoreBus* bus, uint32_t target,
                        uint32_t id, struct BusCoreProperty** property) {
    const int result = checkTarget(core, bus, target);
    if (result != 0) {
        return result;
    }
    *property = busCoreFindProperty(core, bus->number, target, id);
    return *property == NULL ? -ENOENT : 0;
}

// Copies a text field and fills it up with zeros. False when the text has no terminator.
static bool takeText(char* text, const uint8_t* field) {
    uint32_t length = 0;
    memset(text, 0, CONTROL_TEXT_SIZE);
    while (length < CONTROL_TEXT_SIZE && field[length] != 0) {
        text[length] = (char)field[length];
        ++length;
    }
    return length < CONTROL_TEXT_SIZE;
}

static int updateProperty(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record,
                          uint8_t* reply) {
    struct BusCoreProperty* property = NULL;
    char typeName[CONTROL_TEXT_SIZE];
    int result = 0;
    (void)reply;
    if (!takeText(typeName, record + UPDATE_TYPE_NAME)) {
        return -EINVAL;
    }
    result = findProperty(core, bus, controlNumber(record, UPDATE_TARGET),
                          controlNumber(record, UPDATE_PROPERTY), &property);
    if (result == 0) {
        property->value = controlNumber(record, UPDATE_VALUE);
    }
    return result;
}

static int getProperty(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record,
                       uint8_t* reply) {
    struct BusCoreProperty* property = NULL;
    const int result = findProperty(core, bus, controlNumber(record, GET_TARGET),
                                    controlNumber(record, GET_PROPERTY), &property);
    if (result == 0) {
        controlSetNumber(reply, 0, property->value);
    }
    return result;
}

// The path of a bus as a record holds it: cut where the field ends, with its NUL.
static void devicePath(char* text, uint32_t number) {
    static const char prefix[] = "/dev/i2c-";
    uint32_t length = sizeof(prefix) - 1;
    uint32_t unit = 1;
    memset(text, 0, CONTROL_TEXT_SIZE);
    memcpy(text, prefix, length);
    while (number / unit > 9) {
        unit *= 10;
    }
    for (; unit > 0 && length < CONTROL_TEXT_SIZE - 1; unit /= 10) {
        text[length] = (char)('0' + number / unit % 10);
        ++length;
    }
}

static void setNodeProperty(struct BusCore* core, uint32_t bus, uint32_t target, uint32_t id,
                            uint32_t value) {
    if (value != unknownValue) {
        busCoreSetProperty(core, bus, target, id, value);
    }
}

// The request brings two properties of the bus along; the new node gets them.
static void answerNode(struct BusCore* core, uint32_t bus, uint32_t target, const uint8_t* record,
                       uint8_t* reply) {
    setNodeProperty(core, bus, target, PROPERTY_8, controlNumber(record, CREATE_PROPERTY_8));
    setNodeProperty(core, bus, target, PROPERTY_10, controlNumber(record, CREATE_PROPERTY_10));
    controlSetNumber(reply, 0, BUS_CORE_NODE_CREATED);
    controlSetNumber(reply, 4, bus);
}

static bool hasRoomForProperties(const struct BusCore* core, const uint8_t* record) {
    const uint32_t wanted = (controlNumber(record, CREATE_PROPERTY_8) != unknownValue ? 1U : 0U) +
                            (controlNumber(record, CREATE_PROPERTY_10) != unknownValue ? 1U : 0U);
    return wanted <= BUS_CORE_PROPERTIES - core->propertyCount;
}

static const struct BusCoreBus* findIndexNode(const struct BusCore* core, uint32_t parent,
                                              uint32_t index, const char* typeName) {
    for (uint32_t i = 0; i < core->busCount; ++i) {
        const struct BusCoreBus* bus = &core->buses[i];
        if (bus->isIndexNode && bus->parent == parent && bus->index == index &&
            memcmp(bus->typeName, typeName, CONTROL_TEXT_SIZE) == 0) {
            return bus;
        }
    }
    return NULL;
}

static int createIndexNode(struct BusCore* core, const struct BusCoreBus* parent,
                           const char* typeName, const uint8_t* record, uint8_t* reply) {
    const uint32_t index = controlNumber(record, CREATE_INDEX);
    const struct BusCoreBus* existing = findIndexNode(core, parent->number, index, typeName);
    const uint32_t number = busCoreNextBus(core);
    if (existing != NULL) {
        controlSetNumber(reply, 0, BUS_CORE_NODE_USED);
        controlSetNumber(reply, 4, existing->number);
        return 0;
    }
    if (!hasRoomForProperties(core, record) ||
        busCoreAddIndexNode(core, number, parent->number, index, typeName) != 0) {
        return -ENOSPC;
    }
    answerNode(core, number, BUS_CORE_BUS_NODE, record, reply);
    return 0;
}

static int createDeviceNode(struct BusCore* core, const struct BusCoreBus* bus,
                            const char* typeName, const uint8_t* record, uint8_t* reply) {
    const uint32_t target = controlNumber(record, CREATE_TARGET);
    const int result = busCoreCheckDeviceNode(core, bus->number, target);
    if (result != 0) {
        return result;
    }
    if (!hasRoomForProperties(core, record)) {
        return -ENOSPC;
    }
    (void)busCoreAddDeviceNode(core, bus->number, target, controlNumber(record, CREATE_INDEX),
                               typeName);
    answerNode(core, bus->number, target, record, reply);
    return 0;
}

// The device part of an index node is all zero.
static bool hasDevicePart(const uint8_t* record, bool isIndexNode) {
    for (uint32_t i = 0; i < DEVICE_PART_NUMBERS; ++i) {
        const uint32_t expected = isIndexNode ? 0 : devicePart[i];
        if (controlNumber(record, CREATE_DEVICE_PART + 4 * i) != expected) {
            return false;
        }
    }
    return true;
}

static int createNode(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record,
                      uint8_t* reply) {
    char typeName[CONTROL_TEXT_SIZE];
    char path[CONTROL_TEXT_SIZE];
    char expected[CONTROL_TEXT_SIZE] = "";
    const bool isIndexNode = controlNumber(record, CREATE_TARGET) == BUS_CORE_BUS_NODE;
    if (!isIndexNode) {
        devicePath(expected, bus->number);
    }
    if (!takeText(typeName, record + CREATE_TYPE_NAME) ||
        !takeText(path, record + CREATE_DEVICE_PATH) ||
        memcmp(path, expected, CONTROL_TEXT_SIZE) != 0 || !hasDevicePart(record, isIndexNode)) {
        return -EINVAL;
    }
    return isIndexNode ? createIndexNode(core, bus, typeName, record, reply)
                       : createDeviceNode(core, bus, typeName, record, reply);
}

static int removeDevice(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record,
                        uint8_t* reply) {
    (void)reply;
    return busCoreRemoveDeviceNode(core, bus->number, controlNumber(record, REMOVE_TARGET));
}

// No device can answer while the clock is held low. The last step of a recovery releases the clock.
static int recoverBus(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record,
                      uint8_t* reply) {
    (void)reply;
    switch (controlNumber(record, RECOVER_MODE)) {
    case RECOVERY_RESET_STOP:
        return 0;
    case RECOVERY_HOLD_CLOCK_LOW:
        bus->clockHeld = true;
        return 0;
    case RECOVERY_CLOCK_UNRAVEL:
        bus->clockHeld = false;
        busCoreEndFaults(core, bus->number);
        return 0;
    default:
        return -EINVAL;
    }
}

struct Command {
    uint32_t number;
    uint32_t replyLength;    // 0: the request is a single message
    uint32_t selectorOffset; // of the field that a fault's selector matches
    int (*run)(struct BusCore* core, struct BusCoreBus* bus, const uint8_t* record, uint8_t* reply);
};

static const struct Command commands[] = {
    {CONTROL_UPDATE_PROPERTY, 0, UPDATE_PROPERTY, updateProperty},
    {CONTROL_GET_PROPERTY, 4, GET_PROPERTY, getProperty},
    {CONTROL_CREATE_NODE, 8, CREATE_TARGET, createNode},
    {CONTROL_REMOVE_DEVICE, 0, REMOVE_TARGET, removeDevice},
    {CONTROL_RECOVER_BUS, 0, RECOVER_MODE, recoverBus},
};

static const struct Command* findCommand(uint32_t number) {
    for (uint32_t i = 0; i < sizeof(commands) / sizeof(commands[0]); ++i) {
        if (commands[i].number == number) {
            return &commands[i];
        }
    }
    return NULL;
}

// Whether a message to address 0 has this flag alone. I2C_M_DMA_SAFE, which a kernel adds, is fine.
static bool isMarked(const struct i2c_msg* message, uint32_t flag) {
    return (message->flags & ~(uint32_t)I2C_M_DMA_SAFE) == flag && message->addr == 0;
}

int busCoreControl(struct BusCore* core, struct BusCoreBus* bus, struct i2c_msg* messages,
                   uint32_t count) {
    const uint8_t* record = messages[0].buf;
    const struct Command* command = NULL;
    int result = 0;
    if (!isMarked(&messages[0], CONTROL_FLAG)) {
        return -EINVAL;
    }
    if (messages[0].len != CONTROL_RECORD_SIZE) {
        return -EMSGSIZE;
    }
    if (!controlHasMagic(record)) {
        return -EINVAL;
    }
    command = findCommand(controlNumber(record, CONTROL_COMMAND));
    if (command == NULL) {
        return -EOPNOTSUPP;
    }
    if (count != (command->replyLength == 0 ? 1U : 2U)) {
        return -EINVAL;
    }
    if (command->replyLength != 0 && !isMarked(&messages[1], I2C_M_RD)) {
        return -EINVAL;
    }
    if (command->replyLength != 0 && messages[1].len != command->replyLength) {
        return -EMSGSIZE;
    }
    result = -busCoreFaultOf(core, bus->number, command->number,
                             controlNumber(record, command->selectorOffset));
    if (result == 0) {
        result =
            command->run(core, bus, record, command->replyLength != 0 ? messages[1].buf : NULL);
    }
    return result == 0 ? (int)count : result;
}
