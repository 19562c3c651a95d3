// What the interposed functions of the C library have in common.
//
// Opening /dev/i2c-N gives a connected socket to the server that the environment names, and an
// ioctl of the I2C range on one is a datagram each way. Nothing is remembered about descriptors: a
// socket is known by the server's address at its other end, so dup, fork, exec and close need
// nothing of this. No real bus can be reached: whatever opens an I2C device by another path finds
// that there is none, and one that was open before answers nothing. Programs that go round the C
// library are kept from the machine's by zolt_sim.
//
// The kernel is called directly where that serves, so that this works in every process at any time,
// with a sanitizer's own wrappers of the same functions on either side.
#pragma once

#include "standin/i2c_bus/device.h"

#include <stdbool.h>

#define EXPORTED __attribute__((visibility("default")))

// The N of "/dev/i2c-N", which has no zero in front; -1 for any other path, or none.
long busNumber(const char* path);

// Whether a descriptor is an I2C device of this machine.
bool isRealBus(int descriptor);

// The next function of that name, asked for once; false when there is none.
bool realFunction(void** function, const char* name);
