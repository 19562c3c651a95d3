// What a command does with an open I2C bus.
#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/preload/interposed.h"

#include <errno.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <unistd.h>

enum {
    I2C_IOCTL_FIRST = 0x0700,
    I2C_IOCTL_LAST = 0x07FF,
};

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
        if (isRealBus(descriptor)) { // whoever started the command has left it open
            errno = ENODEV;
            return -1;
        }
    }
    return (int)syscall(SYS_ioctl, descriptor, request, argument);
}
