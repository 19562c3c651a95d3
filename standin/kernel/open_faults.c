// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// Buses that cannot be opened.
//
// The kernel opens /dev/i2c-N without asking the bus's driver. A probe at the start of i2c-dev's
// open function lets the call fail as the board's faults say. A probe can neither sleep nor take
// the board's lock, so the opens have faults of their own, which count under a spinlock, and no
// fault delays an open.
#include "standin/kernel/internal.h"

#include "standin/i2c_bus/core/internal.h"

#include <linux/fs.h>
#include <linux/kprobes.h>
#include <linux/ptrace.h>
#include <linux/spinlock.h>

static DEFINE_RAW_SPINLOCK(lock);
static struct Board* inForce; // its openings are in force

static int errorOf(uint32_t bus) {
    unsigned long flags = 0;
    int error = 0;
    raw_spin_lock_irqsave(&lock, flags);
    if (inForce != NULL) {
        error = busCoreFaultOf(inForce->openings, bus, BUS_CORE_OPEN, 0);
    }
    raw_spin_unlock_irqrestore(&lock, flags);
    return error;
}

// Returns to the caller of the function, with the error as its result.
static int beforeOpen(struct kprobe* probe, struct pt_regs* regs) {
    const struct inode* inode = (const struct inode*)regs_get_kernel_argument(regs, 0);
    const int error = errorOf(iminor(inode));
    (void)probe;
    if (error == 0) {
        return 0;
    }
    regs_set_return_value(regs, (unsigned long)-(long)error);
    instruction_pointer_set(regs, procedure_link_pointer(regs));
    return 1;
}
NOKPROBE_SYMBOL(beforeOpen);

static struct kprobe probe = {.symbol_name = "i2cdev_open", .pre_handler = beforeOpen};

int openFaultsInit(void) {
    return register_kprobe(&probe);
}

void openFaultsExit(void) {
    unregister_kprobe(&probe);
}

void openFaultsOf(struct Board* board) {
    unsigned long flags = 0;
    if (board != NULL) { // no other thread uses its openings yet
        memcpy(board->openings->faults, board->core->faults, sizeof(board->core->faults));
        board->openings->faultCount = board->core->faultCount;
    }
    raw_spin_lock_irqsave(&lock, flags);
    inForce = board;
    raw_spin_unlock_irqrestore(&lock, flags);
}

// The core never counts an open, so only a recovery ends its faults of opens.
void openFaultsFollow(struct Board* board) {
    unsigned long flags = 0;
    raw_spin_lock_irqsave(&lock, flags);
    for (uint32_t i = 0; i < board->core->faultCount; ++i) {
        const struct BusCoreFault* fault = &board->core->faults[i];
        if (fault->operation == BUS_CORE_OPEN && fault->isOver) {
            board->openings->faults[i].isOver = true;
        }
    }
    raw_spin_unlock_irqrestore(&lock, flags);
}
