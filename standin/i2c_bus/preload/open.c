// Replaces open() and its variants: /dev/i2c-N leads to a bus of the stand-in.

// These macros would turn the functions below into their 64-bit and fortified variants.
#undef _FILE_OFFSET_BITS
#undef _FORTIFY_SOURCE

#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/preload/bus_path.h"
#include "standin/i2c_bus/preload/interposed.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

// The errno with which open() refuses an existing device because of its flags; 0 for none.
static int refusalOf(int flags) {
    const int creatingOnly = O_CREAT | O_EXCL;
    if ((flags & creatingOnly) == creatingOnly) {
        return EEXIST;
    }
    return (flags & O_DIRECTORY) != 0 ? ENOTDIR : 0;
}

static int openAt(int directory, const char* path, int flags, mode_t mode) {
    const long bus = busNumber(directory, path);
    if (bus >= 0) {
        const int refusal = refusalOf(flags);
        if (refusal != 0 && busIsThere((uint32_t)bus)) {
            errno = refusal;
            return -1;
        }
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

// open() and its many names.
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

// The fortified variants, which take no mode.
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

#define DEFINE_CREAT(name)                                                                         \
    EXPORTED int name(const char* path, mode_t mode);                                              \
    int name(const char* path, mode_t mode) {                                                      \
        return openAt(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode);                         \
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
DEFINE_CREAT(creat)
DEFINE_CREAT(creat64)
// NOLINTEND(bugprone-reserved-identifier)
