// Puts the I2C buses of the stand-in where a command expects /dev/i2c-N.
//
// Opening such a path gives a connected socket to the server that the environment names, and an
// ioctl of the I2C range on one is a datagram each way. Nothing is remembered about descriptors: a
// socket is known by the server's address at its other end, so dup, fork, exec and close need
// nothing of this. No real bus can be reached: whatever opens an I2C device by another path finds
// that there is none.
//
// The kernel is called directly where that serves, so that this works in every process at any time,
// with a sanitizer's own wrappers of the same functions on either side.

// The names below are to be those of the functions, not of their 64-bit twins.
#undef _FILE_OFFSET_BITS
#undef _FORTIFY_SOURCE

#include "standin/i2c_bus/preload/bus_client.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#define EXPORTED __attribute__((visibility("default")))

enum {
    I2C_DEVICE_MAJOR = 89,
    I2C_IOCTL_FIRST = 0x0700,
    I2C_IOCTL_LAST = 0x07FF,
    LONGEST_BUS_NUMBER = 9, // digits
};

// The N of "/dev/i2c-N", which has no zero in front; -1 for any other path.
static long busNumber(const char* path) {
    static const char prefix[] = "/dev/i2c-";
    const char* const digits = path + sizeof(prefix) - 1;
    long number = 0;
    size_t length = 0;
    if (strncmp(path, prefix, sizeof(prefix) - 1) != 0) {
        return -1;
    }
    for (; digits[length] >= '0' && digits[length] <= '9'; ++length) {
        if (length == LONGEST_BUS_NUMBER) {
            return -1;
        }
        number = number * 10 + (digits[length] - '0');
    }
    return length == 0 || digits[length] != '\0' || (length > 1 && digits[0] == '0') ? -1 : number;
}

static bool isRealBus(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) &&
           major(status.st_rdev) == I2C_DEVICE_MAJOR;
}

static int openAt(int directory, const char* path, int flags, mode_t mode) {
    const long bus = path == NULL ? -1 : busNumber(path);
    if (bus >= 0) {
        return busOpen((uint32_t)bus, (flags & O_CLOEXEC) != 0);
    }
    const int descriptor = (int)syscall(SYS_openat, directory, path, flags, mode);
    if (descriptor >= 0 && isRealBus(descriptor)) {
        close(descriptor);
        errno = ENOENT;
        return -1;
    }
    return descriptor;
}

static bool takesMode(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

// open and its many names.
#define DEFINE_OPEN(name)                                                                          \
    EXPORTED int name(const char* path, int flags, ...);                                           \
    int name(const char* path, int flags, ...) {                                                   \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = takesMode(flags) ? va_arg(arguments, mode_t) : 0;                      \
        va_end(arguments);                                                                         \
        return openAt(AT_FDCWD, path, flags, mode);                                                \
    }

#define DEFINE_OPENAT(name)                                                                        \
    EXPORTED int name(int directory, const char* path, int flags, ...);                            \
    int name(int directory, const char* path, int flags, ...) {                                    \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = takesMode(flags) ? va_arg(arguments, mode_t) : 0;                      \
        va_end(arguments);                                                                         \
        return openAt(directory, path, flags, mode);                                               \
    }

// The fortified ones, which have no mode to pass.
#define DEFINE_OPEN_2(name)                                                                        \
    EXPORTED int name(const char* path, int flags);                                                \
    int name(const char* path, int flags) {                                                        \
        return openAt(AT_FDCWD, path, flags, 0);                                                   \
    }

#define DEFINE_OPENAT_2(name)                                                                      \
    EXPORTED int name(int directory, const char* path, int flags);                                 \
    int name(int directory, const char* path, int flags) {                                         \
        return openAt(directory, path, flags, 0);                                                  \
    }

#define DEFINE_FOPEN(name)                                                                         \
    EXPORTED FILE* name(const char* path, const char* mode);                                       \
    FILE* name(const char* path, const char* mode) {                                               \
        static FILE* (*real)(const char*, const char*);                                            \
        return openStream(path, mode, realFunction((void**)&real, #name) ? real : NULL);           \
    }

// NOLINTBEGIN(bugprone-reserved-identifier): these are the C library's names.
DEFINE_OPEN(open)
DEFINE_OPEN(open64)
DEFINE_OPEN(__open)
DEFINE_OPEN(__open64)
DEFINE_OPENAT(openat)
DEFINE_OPENAT(openat64)
DEFINE_OPEN_2(__open_2)
DEFINE_OPEN_2(__open64_2)
DEFINE_OPENAT_2(__openat_2)
DEFINE_OPENAT_2(__openat64_2)
// NOLINTEND(bugprone-reserved-identifier)

// The next one of that name, asked for once.
static bool realFunction(void** function, const char* name) {
    if (*function == NULL) {
        *function = dlsym(RTLD_NEXT, name);
    }
    return *function != NULL;
}

// A stream over a bus is of little use, but it must not be one over a real bus either.
static FILE* openStream(const char* path, const char* mode,
                        FILE* (*real)(const char*, const char*)) {
    const long bus = busNumber(path);
    if (bus >= 0) {
        const int descriptor = busOpen((uint32_t)bus, strchr(mode, 'e') != NULL);
        FILE* const stream = descriptor < 0 ? NULL : fdopen(descriptor, mode);
        if (stream == NULL && descriptor >= 0) {
            close(descriptor);
        }
        return stream;
    }
    FILE* stream = real == NULL ? NULL : real(path, mode);
    if (stream != NULL && isRealBus(fileno(stream))) {
        fclose(stream);
        errno = ENOENT;
        stream = NULL;
    }
    return stream;
}

DEFINE_FOPEN(fopen)
DEFINE_FOPEN(fopen64)

EXPORTED int ioctl(int descriptor, unsigned long request, ...);
int ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request >= I2C_IOCTL_FIRST && request <= I2C_IOCTL_LAST && busIsOpen(descriptor)) {
        return busIoctl(descriptor, request, argument);
    }
    return (int)syscall(SYS_ioctl, descriptor, request, argument);
}
