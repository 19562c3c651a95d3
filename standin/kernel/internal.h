// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// What the module's files share.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <linux/i2c.h>
#include <linux/kref.h>
#include <linux/mutex.h>
#include <linux/wait.h>

struct BoardAdapter;

// A transaction whose caller waits until zolt_sim has seen it.
struct WaitingTransaction {
    uint32_t bus;
    struct i2c_msg* messages;
    uint32_t count;
    int result;
    bool isTaken; // zolt_sim has read it
};

struct Board {
    struct kref references; // of the control device's file, and of each adapter
    struct mutex lock;      // guards the core, the adapters and the clients
    struct BusCore* core;
    struct BusCore* openings; // has only a copy of the faults, for opens; guarded by open_faults.c
    struct BoardAdapter* adapters[BUS_CORE_BUSES]; // in the order of the core's buses
    uint32_t adapterCount;
    struct i2c_client* clients[BUS_CORE_DEVICES]; // one for each device node, in no order
    uint32_t clientCount;
    bool isLoaded;

    struct mutex waitingLock; // taken after `lock`; guards the fields below
    struct WaitingTransaction* waiting;
    bool isClosed; // zolt_sim has gone; set while holding waitingLock
    wait_queue_head_t changed;
};

// board.c: a board and its tables.

// Returns null for lack of memory.
struct Board* boardNew(void);
void boardGet(struct Board* board);
void boardPut(struct Board* board);

// Fills an empty board with the tables of a process. Returns 0 or a negative errno.
int boardTake(struct Board* board, const struct BusCore __user* tables);

// Copies the board's tables to a process. Returns 0 or a negative errno.
int boardGive(const struct Board* board, struct BusCore __user* tables);

// adapters.c: the board's buses and device nodes as the kernel knows them.

int adaptersInit(void);
void adaptersExit(void);

// Registers what the core's tables have and the kernel does not, and the other way round. The
// caller holds the board's lock. Returns 0 or a negative errno. A device node that cannot be
// registered leaves the tables; the caller takes out a bus that cannot be registered.
int adaptersSettle(struct Board* board);

// Removes all adapters in the background, because a removal waits for open descriptors. The caller
// holds the board's lock.
void adaptersRemove(struct Board* board);

// Waits until the adapters of earlier boards are gone. Returns 0, -EBUSY after a time, or
// -ERESTARTSYS.
int adaptersAwaitRemoval(void);

// shown_transaction.c: the transaction that zolt_sim is to see.

// Shows a transaction to zolt_sim and waits until zolt_sim is done with it, or has gone. A fatal
// signal to the caller ends the wait. The caller holds the board's lock.
void showTransaction(struct Board* board, struct WaitingTransaction* transaction);

// Returns true if a transaction waits that zolt_sim has not read.
bool isTransactionToRead(struct Board* board);

// Copies that transaction to a process. Returns its size, -EAGAIN without one, or -EFAULT when it
// does not fit or cannot be written.
ssize_t readTransaction(struct Board* board, char __user* buffer, size_t size);

// Copies the board's tables to a process while a transaction waits. Returns 0, -EAGAIN without a
// transaction, or another negative errno.
int giveStateAtTransaction(struct Board* board, struct BusCore __user* tables);

// Lets the caller of the transaction that zolt_sim has read go on.
void endTransaction(struct Board* board);

// zolt_sim goes: no transaction waits any more.
void closeTransactions(struct Board* board);

// open_faults.c: buses that cannot be opened.

int openFaultsInit(void);
void openFaultsExit(void);

// Puts the faults of a board in force, or with null those of none. The caller holds the board's
// lock, if there is a board.
void openFaultsOf(struct Board* board);

// Ends the faults of opens that a recovery has ended. The caller holds the board's lock.
void openFaultsFollow(struct Board* board);
