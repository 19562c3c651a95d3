// Shared by the preload library's replacements for functions of the C library.
//
// Opening /dev/i2c-N, however its path is written, returns a socket that is connected to the bus
// server. An ioctl of the I2C range on such a socket is one datagram each way. The library keeps no
// table of descriptors: it recognizes its sockets by the server's address at the other end. So dup,
// fork, exec and close need no replacement.
//
// The machine's buses stay out of reach. Opening an I2C device by another path fails with ENOENT.
// If another process hands over an open device, I2C ioctls on it fail with ENODEV, but reads and
// writes do not. For programs that bypass the C library, zolt_sim shuts off the device nodes that
// it finds when the command starts.
//
// Where possible, the replacements make system calls directly. They then work in every process at
// any time, before or behind a sanitizer's wrappers for the same functions.
#pragma once

#include "standin/i2c_bus/device.h"

#include <stdbool.h>

#define EXPORTED __attribute__((visibility("default")))

// Whether a descriptor is an I2C device of this machine.
bool isRealBus(int descriptor);

// Looks up the next function of that name, once. False when there is none.
bool realFunction(void** function, const char* name);
