// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The board's buses as I2C adapters, and its device nodes as I2C clients.
#include "standin/kernel/internal.h"

#include "standin/i2c_bus/core/functions.h"

#include <linux/module.h>
#include <linux/slab.h>
#include <linux/workqueue.h>

struct BoardAdapter {
    struct i2c_adapter adapter;
    struct Board* board;
    struct work_struct removal;
};

static const char nodeName[] = "zolt_node";

enum {
    LONGEST_REMOVAL = 30, // seconds
};

static struct workqueue_struct* removals;
static atomic_t adaptersLeft = ATOMIC_INIT(0); // of all boards
static DECLARE_WAIT_QUEUE_HEAD(adapterGone);

// Performs a transfer. The caller holds the board's lock.
static int perform(struct Board* board, const struct WaitingTransaction* transaction) {
    struct BusCore* core = board->core;
    const uint32_t buses = core->busCount;
    const uint32_t properties = core->propertyCount;
    int result = busCoreTransfer(core, transaction->bus, transaction->messages, transaction->count);
    if (result >= 0) {
        const int settled = adaptersSettle(board);
        result = settled == 0 ? result : settled;
        if (settled != 0 && core->busCount > buses) { // a new bus stands last in its table
            core->busCount = buses;
            core->propertyCount = properties;
        }
        openFaultsFollow(board);
    }
    return result;
}

// Waits as long as a fault delays a transfer. Only a fatal signal or the end of the board ends the
// wait before its time. The caller must not hold the board's lock. Returns 0 or a negative errno.
static int await(struct Board* board, uint32_t milliseconds) {
    long left = 0;
    if (milliseconds == BUS_CORE_FOREVER) {
        left = wait_event_killable(board->changed, READ_ONCE(board->isClosed));
    } else {
        // The first tick may come at once.
        left = wait_event_killable_timeout(board->changed, READ_ONCE(board->isClosed),
                                           (long)msecs_to_jiffies(milliseconds) + 1);
    }
    if (left < 0) {
        return -EINTR;
    }
    return READ_ONCE(board->isClosed) ? -ENODEV : 0;
}

static int transfer(struct i2c_adapter* adapter, struct i2c_msg* messages, int count) {
    struct BoardAdapter* bus = container_of(adapter, struct BoardAdapter, adapter);
    struct Board* board = bus->board;
    struct WaitingTransaction transaction = {
        .bus = (uint32_t)adapter->nr, .messages = messages, .count = (uint32_t)count};
    uint32_t delay = 0;
    if (mutex_lock_killable(&board->lock) != 0) {
        return -EINTR;
    }
    if (READ_ONCE(board->isClosed)) {
        mutex_unlock(&board->lock);
        return -ENODEV;
    }
    transaction.result = perform(board, &transaction);
    delay = board->core->delay;
    if (delay != 0) {
        int result = 0;
        mutex_unlock(&board->lock);
        result = await(board, delay);
        if (result != 0) {
            return result;
        }
        if (mutex_lock_killable(&board->lock) != 0) {
            return -EINTR;
        }
    }
    showTransaction(board, &transaction);
    mutex_unlock(&board->lock);
    return transaction.result;
}

// The board's lock keeps transfers apart. A lock of the bus besides would hold up all others while
// a fault delays one.
static void lockBus(struct i2c_adapter* adapter, unsigned int flags) {
    (void)adapter;
    (void)flags;
}

static int tryLockBus(struct i2c_adapter* adapter, unsigned int flags) {
    (void)adapter;
    (void)flags;
    return 1;
}

static const struct i2c_lock_operations lockOperations = {
    .lock_bus = lockBus,
    .trylock_bus = tryLockBus,
    .unlock_bus = lockBus,
};

static u32 functionality(struct i2c_adapter* adapter) {
    (void)adapter;
    return BUS_CORE_FUNCTIONS;
}

static const struct i2c_algorithm algorithm = {
    .master_xfer = transfer,
    .functionality = functionality,
};

// A number that is in use would make the kernel warn.
static bool isNumberInUse(uint32_t number) {
    struct i2c_adapter* adapter = i2c_get_adapter((int)number);
    if (adapter == NULL) {
        return false;
    }
    i2c_put_adapter(adapter);
    return true;
}

static void removeClients(struct Board* board, const struct i2c_adapter* adapter) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < board->clientCount; ++i) {
        struct i2c_client* client = board->clients[i];
        if (client->adapter == adapter) {
            i2c_unregister_device(client);
        } else {
            board->clients[kept] = client;
            ++kept;
        }
    }
    board->clientCount = kept;
}

static void removeAdapter(struct work_struct* work) {
    struct BoardAdapter* bus = container_of(work, struct BoardAdapter, removal);
    struct Board* board = bus->board;
    mutex_lock(&board->lock);
    removeClients(board, &bus->adapter);
    mutex_unlock(&board->lock);
    i2c_del_adapter(&bus->adapter);
    kfree(bus);
    boardPut(board);
    atomic_dec(&adaptersLeft);
    wake_up_all(&adapterGone);
}

static int addAdapter(struct Board* board, const struct BusCoreBus* described) {
    struct BoardAdapter* bus = NULL;
    int result = 0;
    if (isNumberInUse(described->number)) {
        return -EBUSY;
    }
    bus = kzalloc(sizeof(*bus), GFP_KERNEL);
    if (bus == NULL) {
        return -ENOMEM;
    }
    bus->board = board;
    INIT_WORK(&bus->removal, removeAdapter);
    bus->adapter.owner = THIS_MODULE;
    bus->adapter.algo = &algorithm;
    bus->adapter.lock_ops = &lockOperations;
    bus->adapter.nr = (int)described->number;
    if (described->isIndexNode) {
        snprintf(bus->adapter.name, sizeof(bus->adapter.name), "%s %u behind i2c-%u",
                 described->typeName, described->index, described->parent);
    } else {
        snprintf(bus->adapter.name, sizeof(bus->adapter.name), "bus of the board");
    }
    result = i2c_add_numbered_adapter(&bus->adapter);
    if (result != 0) {
        kfree(bus);
        return result;
    }
    boardGet(board);
    atomic_inc(&adaptersLeft);
    board->adapters[board->adapterCount] = bus;
    ++board->adapterCount;
    return 0;
}

static struct BoardAdapter* adapterOf(const struct Board* board, uint32_t bus) {
    for (uint32_t i = 0; i < board->adapterCount; ++i) {
        if ((uint32_t)board->adapters[i]->adapter.nr == bus) {
            return board->adapters[i];
        }
    }
    return NULL;
}

static struct i2c_client* clientOf(const struct Board* board, uint32_t bus, uint32_t address) {
    for (uint32_t i = 0; i < board->clientCount; ++i) {
        struct i2c_client* client = board->clients[i];
        if ((uint32_t)client->adapter->nr == bus && client->addr == address) {
            return client;
        }
    }
    return NULL;
}

static int addClient(struct Board* board, const struct BusCoreDevice* device) {
    struct i2c_board_info info = {.addr = (unsigned short)device->address};
    struct i2c_client* client = NULL;
    strscpy(info.type, nodeName, sizeof(info.type));
    client = i2c_new_client_device(&adapterOf(board, device->bus)->adapter, &info);
    if (IS_ERR(client)) {
        return (int)PTR_ERR(client);
    }
    board->clients[board->clientCount] = client;
    ++board->clientCount;
    return 0;
}

static void removeSpareClients(struct Board* board) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < board->clientCount; ++i) {
        struct i2c_client* client = board->clients[i];
        const struct BusCoreDevice* device =
            busCoreFindDevice(board->core, (uint32_t)client->adapter->nr, client->addr);
        if (device == NULL || !device->hasNode) {
            i2c_unregister_device(client);
        } else {
            board->clients[kept] = client;
            ++kept;
        }
    }
    board->clientCount = kept;
}

static uint32_t nodeCount(const struct BusCore* core) {
    uint32_t count = 0;
    for (uint32_t i = 0; i < core->deviceCount; ++i) {
        count += core->devices[i].hasNode ? 1 : 0;
    }
    return count;
}

int adaptersSettle(struct Board* board) {
    struct BusCore* core = board->core;
    while (board->adapterCount < core->busCount) {
        const int result = addAdapter(board, &core->buses[board->adapterCount]);
        if (result != 0) {
            return result;
        }
    }
    // A transaction makes or removes one node at most, so a change shows in the count.
    if (nodeCount(core) == board->clientCount) {
        return 0;
    }
    removeSpareClients(board);
    for (uint32_t i = 0; i < core->deviceCount; ++i) {
        const struct BusCoreDevice* device = &core->devices[i];
        int result = 0;
        if (device->hasNode && clientOf(board, device->bus, device->address) == NULL) {
            result = addClient(board, device);
        }
        if (result != 0) {
            (void)busCoreRemoveDeviceNode(core, device->bus, device->address);
            return result;
        }
    }
    return 0;
}

void adaptersRemove(struct Board* board) {
    for (uint32_t i = 0; i < board->adapterCount; ++i) {
        queue_work(removals, &board->adapters[i]->removal);
    }
}

int adaptersAwaitRemoval(void) {
    const long left = wait_event_interruptible_timeout(adapterGone, atomic_read(&adaptersLeft) == 0,
                                                       LONGEST_REMOVAL * HZ);
    if (left < 0) {
        return (int)left;
    }
    return left == 0 ? -EBUSY : 0;
}

// A device node is a client with a driver, so that the kernel refuses its address to I2C_SLAVE.
static int probeNode(struct i2c_client* client) {
    (void)client;
    return 0;
}

static const struct i2c_device_id nodeIds[] = {{.name = "zolt_node"}, {}};

static struct i2c_driver nodeDriver = {
    .driver = {.name = "zolt_node"},
    .probe_new = probeNode,
    .id_table = nodeIds,
};

int adaptersInit(void) {
    int result = 0;
    removals = alloc_workqueue("zolt_bus", WQ_UNBOUND, BUS_CORE_BUSES);
    if (removals == NULL) {
        return -ENOMEM;
    }
    result = i2c_add_driver(&nodeDriver);
    if (result != 0) {
        destroy_workqueue(removals);
    }
    return result;
}

void adaptersExit(void) {
    destroy_workqueue(removals); // ends when the last adapter is gone
    i2c_del_driver(&nodeDriver);
}
