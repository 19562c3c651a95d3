// Replaces read(), write() and ioctl(): on an open bus they talk to the bus server.

#undef _FORTIFY_SOURCE // the macro would turn the functions below into their fortified variants

#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/preload/interposed.h"

#include <errno.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

enum {
    I2C_IOCTL_FIRST = 0x0700,
    I2C_IOCTL_LAST = 0x07FF,
};

EXPORTED ssize_t read(int descriptor, void* buffer, size_t size) {
    static ssize_t (*real)(int, void*, size_t);
    if (busIsOpen(descriptor)) {
        return busRead(descriptor, buffer, size);
    }
    return realFunction((void**)&real, "read") ? real(descriptor, buffer, size)
                                               : syscall(SYS_read, descriptor, buffer, size);
}

// NOLINTBEGIN(bugprone-reserved-identifier): the fortified name is the C library's.
EXPORTED ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t room);
ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t room) {
    static ssize_t (*real)(int, void*, size_t, size_t);
    if (size <= room) {
        return read(descriptor, buffer, size);
    }
    if (realFunction((void**)&real, "__read_chk")) {
        return real(descriptor, buffer, size, room); // ends the program
    }
    abort();
}
// NOLINTEND(bugprone-reserved-identifier)

EXPORTED ssize_t write(int descriptor, const void* buffer, size_t size) {
    static ssize_t (*real)(int, const void*, size_t);
    if (busIsOpen(descriptor)) {
        return busWrite(descriptor, buffer, size);
    }
    return realFunction((void**)&real, "write") ? real(descriptor, buffer, size)
                                                : syscall(SYS_write, descriptor, buffer, size);
}

EXPORTED int ioctl(int descriptor, unsigned long request, ...);
int ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request >= I2C_IOCTL_FIRST && request <= I2C_IOCTL_LAST) {
        if (busIsOpen(descriptor)) {
            return busIoctl(descriptor, request, argument);
        }
        if (isRealBus(descriptor)) { // received from another process
            errno = ENODEV;
            return -1;
        }
    }
    return (int)syscall(SYS_ioctl, descriptor, request, argument);
}
