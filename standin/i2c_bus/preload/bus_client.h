// The client's side of a bus: one connection to the server stands for one open device.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

// Opens a bus of the server that the environment names. A descriptor, or -1 with the errno that
// the server decides; ENOENT when the environment names none, ENXIO when it does not answer.
int busOpen(uint32_t bus, bool closeOnExec);

// Whether the server has such a bus, be it one that it refuses to open. Leaves errno as it is.
bool busIsThere(uint32_t bus);

// Whether a descriptor is one of busOpen(). Leaves errno as it is.
bool busIsOpen(int descriptor);

// The number of the bus that a descriptor of busOpen() stands for; -1 for any other descriptor.
// Leaves errno as it is.
long busOf(int descriptor);

// A read or a write of such a descriptor: a transfer from or to the address that an ioctl has set,
// of at most 8192 bytes. The count, or -1 with errno.
ssize_t busRead(int descriptor, void* buffer, size_t size);
ssize_t busWrite(int descriptor, const void* buffer, size_t size);

// An ioctl of the I2C range on such a descriptor, with the results of the kernel's I2C devices.
// Threads may share a descriptor; processes that do must take turns.
int busIoctl(int descriptor, unsigned long request, void* argument);

#ifdef __cplusplus
}
#endif
