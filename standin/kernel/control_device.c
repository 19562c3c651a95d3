// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The module's control device, and the module itself.
#include "standin/kernel/bus_module.h"
#include "standin/kernel/internal.h"

#include <linux/fs.h>
#include <linux/miscdevice.h>
#include <linux/module.h>
#include <linux/poll.h>
#include <linux/uaccess.h>

static atomic_t isInUse = ATOMIC_INIT(0);

void showTransaction(struct Board* board, struct WaitingTransaction* transaction) {
    mutex_lock(&board->waitingLock);
    if (board->isClosed) {
        mutex_unlock(&board->waitingLock);
        return;
    }
    board->waiting = transaction;
    mutex_unlock(&board->waitingLock);
    wake_up_all(&board->changed);
    (void)wait_event_killable(board->changed, READ_ONCE(board->waiting) != transaction);
    // After a fatal signal zolt_sim may still be reading the messages.
    mutex_lock(&board->waitingLock);
    if (board->waiting == transaction) {
        board->waiting = NULL;
    }
    mutex_unlock(&board->waitingLock);
}

static int controlOpen(struct inode* inode, struct file* file) {
    struct Board* board = NULL;
    int result = 0;
    (void)inode;
    if (atomic_cmpxchg(&isInUse, 0, 1) != 0) {
        return -EBUSY;
    }
    result = adaptersAwaitRemoval();
    if (result == 0) {
        board = boardNew();
        result = board == NULL ? -ENOMEM : 0;
    }
    if (result != 0) {
        atomic_set(&isInUse, 0);
        return result;
    }
    file->private_data = board;
    return nonseekable_open(inode, file);
}

static int controlRelease(struct inode* inode, struct file* file) {
    struct Board* board = file->private_data;
    (void)inode;
    openFaultsOf(NULL);
    mutex_lock(&board->waitingLock);
    WRITE_ONCE(board->isClosed, true);
    WRITE_ONCE(board->waiting, NULL);
    mutex_unlock(&board->waitingLock);
    wake_up_all(&board->changed);
    mutex_lock(&board->lock); // the last transaction is over
    adaptersRemove(board);
    mutex_unlock(&board->lock);
    boardPut(board);
    atomic_set(&isInUse, 0);
    return 0;
}

static int load(struct Board* board, const struct BusCore __user* tables) {
    int result = -EBUSY;
    mutex_lock(&board->lock);
    if (!board->isLoaded) {
        board->isLoaded = true;
        result = boardTake(board, tables);
        if (result == 0) {
            result = adaptersSettle(board);
        }
        if (result == 0) {
            openFaultsOf(board);
        }
    }
    mutex_unlock(&board->lock);
    return result;
}

static int giveState(struct Board* board, struct BusCore __user* tables) {
    int result = -EAGAIN;
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL) { // the thread that holds the board's lock is asleep
        result = boardGive(board, tables);
    }
    mutex_unlock(&board->waitingLock);
    return result;
}

static int finish(struct Board* board) {
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL && board->waiting->isTaken) {
        WRITE_ONCE(board->waiting, NULL);
    }
    mutex_unlock(&board->waitingLock);
    wake_up_all(&board->changed);
    return 0;
}

static long controlIoctl(struct file* file, unsigned int request, unsigned long argument) {
    struct Board* board = file->private_data;
    switch (request) {
    case BUS_MODULE_LOAD:
        return load(board, (const struct BusCore __user*)argument);
    case BUS_MODULE_STATE:
        return giveState(board, (struct BusCore __user*)argument);
    case BUS_MODULE_DONE:
        return finish(board);
    default:
        return -ENOTTY;
    }
}

static bool isThereNews(struct Board* board) {
    bool isNew = false;
    mutex_lock(&board->waitingLock);
    isNew = board->waiting != NULL && !board->waiting->isTaken;
    mutex_unlock(&board->waitingLock);
    return isNew;
}

static __poll_t controlPoll(struct file* file, poll_table* table) {
    struct Board* board = file->private_data;
    poll_wait(file, &board->changed, table);
    return isThereNews(board) ? EPOLLIN | EPOLLRDNORM : 0;
}

// Copies bytes to a process and moves on. False when they do not fit or cannot be written.
static bool put(char __user** to, size_t* room, const void* bytes, size_t count) {
    if (count > *room || copy_to_user(*to, bytes, count) != 0) {
        return false;
    }
    *to += count;
    *room -= count;
    return true;
}

static bool putTransaction(const struct WaitingTransaction* transaction, char __user** to,
                           size_t* room) {
    const struct i2c_msg* messages = transaction->messages;
    const struct BusModuleTransaction head = {
        .bus = transaction->bus, .result = transaction->result, .count = transaction->count};
    if (!put(to, room, &head, sizeof(head))) {
        return false;
    }
    for (uint32_t i = 0; i < transaction->count; ++i) {
        const struct BusModuleMessage message = {
            .address = messages[i].addr, .flags = messages[i].flags, .length = messages[i].len};
        if (!put(to, room, &message, sizeof(message))) {
            return false;
        }
    }
    for (uint32_t i = 0; i < transaction->count; ++i) {
        if (!put(to, room, messages[i].buf, messages[i].len)) {
            return false;
        }
    }
    return true;
}

static ssize_t controlRead(struct file* file, char __user* buffer, size_t size, loff_t* position) {
    struct Board* board = file->private_data;
    size_t room = size;
    ssize_t result = -EAGAIN;
    (void)position;
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL && !board->waiting->isTaken) {
        board->waiting->isTaken = putTransaction(board->waiting, &buffer, &room);
        result = board->waiting->isTaken ? (ssize_t)(size - room) : -EFAULT;
    }
    mutex_unlock(&board->waitingLock);
    return result;
}

static const struct file_operations operations = {
    .owner = THIS_MODULE,
    .open = controlOpen,
    .release = controlRelease,
    .unlocked_ioctl = controlIoctl,
    .poll = controlPoll,
    .read = controlRead,
    .llseek = no_llseek,
};

static struct miscdevice controlDevice = {
    .minor = MISC_DYNAMIC_MINOR,
    .name = BUS_MODULE_DEVICE,
    .fops = &operations,
    .mode = 0600,
};

static int __init zoltBusInit(void) {
    int result = adaptersInit();
    if (result != 0) {
        return result;
    }
    result = openFaultsInit();
    if (result == 0) {
        result = misc_register(&controlDevice);
        if (result == 0) {
            return 0;
        }
        openFaultsExit();
    }
    adaptersExit();
    return result;
}

static void __exit zoltBusExit(void) {
    misc_deregister(&controlDevice);
    openFaultsExit();
    adaptersExit();
}

module_init(zoltBusInit);
module_exit(zoltBusExit);
MODULE_DESCRIPTION("The I2C buses of a described board");
// The kernel opens the interfaces that this module needs to GPL-compatible modules only.
MODULE_LICENSE("GPL and additional rights");
MODULE_SOFTDEP("pre: i2c-dev");
