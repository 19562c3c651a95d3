// A second preload library: makes /dev/zero an I2C device of this machine, which answers. The
// stand-in's library asks the kernel by syscall(), which is how this gets between the two.
#include <dlfcn.h>
#include <linux/i2c-dev.h>
#include <stdarg.h>
#include <stdbool.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

enum { ARGUMENTS = 6, I2C_DEVICE_MAJOR = 89 };

static bool isZero(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && status.st_rdev == makedev(1, 5);
}

long syscall(long number, ...) {
    static long (*real)(long number, ...);
    long given[ARGUMENTS];
    va_list arguments;
    va_start(arguments, number);
    for (int i = 0; i < ARGUMENTS; ++i) {
        given[i] = va_arg(arguments, long);
    }
    va_end(arguments);
    if (number == SYS_ioctl && given[1] == I2C_FUNCS && isZero((int)given[0])) {
        return 0;
    }
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "syscall");
    }
    const long result = real(number, given[0], given[1], given[2], given[3], given[4], given[5]);
    if (number == SYS_statx && result == 0 && isZero((int)given[0])) {
        ((struct statx*)given[4])->stx_rdev_major = I2C_DEVICE_MAJOR;
    }
    return result;
}
