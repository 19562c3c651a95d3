// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// The transaction that zolt_sim is to see. Only this file changes the fields of a board that
// waitingLock guards.
#include "standin/kernel/bus_module.h"
#include "standin/kernel/internal.h"

#include <linux/uaccess.h>

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

bool isTransactionToRead(struct Board* board) {
    bool isNew = false;
    mutex_lock(&board->waitingLock);
    isNew = board->waiting != NULL && !board->waiting->isTaken;
    mutex_unlock(&board->waitingLock);
    return isNew;
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

ssize_t readTransaction(struct Board* board, char __user* buffer, size_t size) {
    size_t room = size;
    ssize_t result = -EAGAIN;
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL && !board->waiting->isTaken) {
        board->waiting->isTaken = putTransaction(board->waiting, &buffer, &room);
        result = board->waiting->isTaken ? (ssize_t)(size - room) : -EFAULT;
    }
    mutex_unlock(&board->waitingLock);
    return result;
}

int giveStateAtTransaction(struct Board* board, struct BusCore __user* tables) {
    int result = -EAGAIN;
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL) { // the thread that holds the board's lock is asleep
        result = boardGive(board, tables);
    }
    mutex_unlock(&board->waitingLock);
    return result;
}

void endTransaction(struct Board* board) {
    mutex_lock(&board->waitingLock);
    if (board->waiting != NULL && board->waiting->isTaken) {
        WRITE_ONCE(board->waiting, NULL);
    }
    mutex_unlock(&board->waitingLock);
    wake_up_all(&board->changed);
}

void closeTransactions(struct Board* board) {
    mutex_lock(&board->waitingLock);
    WRITE_ONCE(board->isClosed, true);
    WRITE_ONCE(board->waiting, NULL);
    mutex_unlock(&board->waitingLock);
    wake_up_all(&board->changed);
}
