// The client of the bus server. One connection to the server stands for one open device.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

// Opens a bus of the server that the environment names. Returns a descriptor, or -1 with the errno
// of the server's refusal, ENOENT when the environment names no server, or ENXIO when the server
// does not answer.
int busOpen(uint32_t bus, bool closeOnExec);

// Whether the server has the bus, even if it refuses to open it. Leaves errno as it is.
bool busIsThere(uint32_t bus);

// Whether a descriptor comes from busOpen(). Leaves errno as it is.
bool busIsOpen(int descriptor);

// The bus number of a descriptor from busOpen(); -1 for any other descriptor. Leaves errno as it
// is.
long busOf(int descriptor);

// Reads from or writes to a descriptor from busOpen(): transfers at most 8192 bytes from or to the
// address that an ioctl has set. Returns the number of bytes, or -1 with errno.
ssize_t busRead(int descriptor, void* buffer, size_t size);
ssize_t busWrite(int descriptor, const void* buffer, size_t size);

// Performs an ioctl of the I2C range on a descriptor from busOpen(), with the results of the
// kernel's I2C devices. Threads may share a descriptor; they take turns. Processes that share one
// must take turns themselves. A call waits for its own bus only.
int busIoctl(int descriptor, unsigned long request, void* argument);

#ifdef __cplusplus
}
#endif
