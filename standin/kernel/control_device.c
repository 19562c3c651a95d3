// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The module's control device, and the module itself.
#include "standin/kernel/bus_module.h"
#include "standin/kernel/internal.h"

#include <linux/fs.h>
#include <linux/miscdevice.h>
#include <linux/module.h>
#include <linux/poll.h>

static atomic_t isInUse = ATOMIC_INIT(0);

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
    closeTransactions(board);
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

static long controlIoctl(struct file* file, unsigned int request, unsigned long argument) {
    struct Board* board = file->private_data;
    switch (request) {
    case BUS_MODULE_LOAD:
        return load(board, (const struct BusCore __user*)argument);
    case BUS_MODULE_STATE:
        return giveStateAtTransaction(board, (struct BusCore __user*)argument);
    case BUS_MODULE_DONE:
        endTransaction(board);
        return 0;
    default:
        return -ENOTTY;
    }
}

static __poll_t controlPoll(struct file* file, poll_table* table) {
    struct Board* board = file->private_data;
    poll_wait(file, &board->changed, table);
    return isTransactionToRead(board) ? EPOLLIN | EPOLLRDNORM : 0;
}

static ssize_t controlRead(struct file* file, char __user* buffer, size_t size, loff_t* position) {
    (void)position;
    return readTransaction(file->private_data, buffer, size);
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
