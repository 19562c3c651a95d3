// Replaces stat(), access() and their variants: the stand-in's I2C buses look like character
// devices, and the machine's buses are hidden.

#undef _FILE_OFFSET_BITS // the macro would turn the functions below into their 64-bit variants
#undef _FORTIFY_SOURCE

#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/preload/bus_path.h"
#include "standin/i2c_bus/preload/conversation.h"
#include "standin/i2c_bus/preload/interposed.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

enum {
    NO_BUS = -1,
    MISSING_BUS = -2,
    BUS_MODE = S_IFCHR | 0660,
};

// A device that every machine has. Its status serves for a bus, except for mode and number.
static const char example[] = "/dev/null";

// The number of a bus that exists, or one of the above.
static long busAt(int directory, const char* path, int flags) {
    if (path == NULL || (path[0] == '\0' && (flags & AT_EMPTY_PATH) != 0)) {
        return busOf(directory);
    }
    const long bus = busNumber(directory, path);
    return bus < 0 || busIsThere((uint32_t)bus) ? bus : MISSING_BUS;
}

// Gives the example's status the bus's mode and number. Hides a bus of the machine.
static int show(long bus, mode_t* mode, dev_t* device) {
    if (bus >= 0) {
        *mode = BUS_MODE;
        *device = makedev(I2C_DEVICE_MAJOR, (unsigned)bus);
    } else if (S_ISCHR(*mode) && major(*device) == I2C_DEVICE_MAJOR) {
        return failed(ENOENT);
    }
    return 0;
}

// The functions for one of the two layouts of `struct stat`.
// NOLINTBEGIN(bugprone-macro-parentheses): a type cannot stand in parentheses.
#define DEFINE_STATS(type, suffix)                                                                 \
    static int statAt##suffix(int directory, const char* path, type* status, int flags) {          \
        static int (*real)(int, const char*, type*, int);                                          \
        const long bus = busAt(directory, path, flags);                                            \
        if (bus == MISSING_BUS) {                                                                  \
            return failed(ENOENT);                                                                 \
        }                                                                                          \
        if (!realFunction((void**)&real, "fstatat" #suffix)) {                                     \
            return failed(ENOSYS);                                                                 \
        }                                                                                          \
        return (bus < 0 ? real(directory, path, status, flags)                                     \
                        : real(AT_FDCWD, example, status, 0)) == 0                                 \
                   ? show(bus, &status->st_mode, &status->st_rdev)                                 \
                   : -1;                                                                           \
    }                                                                                              \
    EXPORTED int stat##suffix(const char* path, type* status) {                                    \
        return statAt##suffix(AT_FDCWD, path, status, 0);                                          \
    }                                                                                              \
    EXPORTED int lstat##suffix(const char* path, type* status) {                                   \
        return statAt##suffix(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);                        \
    }                                                                                              \
    EXPORTED int fstat##suffix(int descriptor, type* status) {                                     \
        return statAt##suffix(descriptor, "", status, AT_EMPTY_PATH);                              \
    }                                                                                              \
    EXPORTED int fstatat##suffix(int directory, const char* path, type* status, int flags) {       \
        return statAt##suffix(directory, path, status, flags);                                     \
    }
// NOLINTEND(bugprone-macro-parentheses)

DEFINE_STATS(struct stat, )
DEFINE_STATS(struct stat64, 64)

EXPORTED int statx(int directory, const char* path, int flags, unsigned mask,
                   struct statx* status) {
    const long bus = busAt(directory, path, flags);
    if (bus == MISSING_BUS) {
        return failed(ENOENT);
    }
    const long result = bus < 0 ? syscall(SYS_statx, directory, path, flags, mask, status)
                                : syscall(SYS_statx, AT_FDCWD, example, 0, mask, status);
    if (result != 0) {
        return -1;
    }
    mode_t mode = status->stx_mode;
    dev_t device = makedev(status->stx_rdev_major, status->stx_rdev_minor);
    const int shown = show(bus, &mode, &device);
    status->stx_mode = (uint16_t)mode;
    status->stx_rdev_major = major(device);
    status->stx_rdev_minor = minor(device);
    return shown;
}

static int accessBus(long bus, int mode) {
    if (!busIsThere((uint32_t)bus)) {
        return failed(ENOENT);
    }
    return (mode & X_OK) != 0 ? failed(EACCES) : 0;
}

#define DEFINE_ACCESS(name)                                                                        \
    EXPORTED int name(const char* path, int mode) {                                                \
        static int (*real)(const char*, int);                                                      \
        const long bus = busNumber(AT_FDCWD, path);                                                \
        if (bus >= 0) {                                                                            \
            return accessBus(bus, mode);                                                           \
        }                                                                                          \
        return realFunction((void**)&real, #name) ? real(path, mode) : failed(ENOSYS);             \
    }

DEFINE_ACCESS(access)
DEFINE_ACCESS(eaccess)
DEFINE_ACCESS(euidaccess)

// `ls -l` asks for access control lists with these functions.
#define DEFINE_GETXATTR(name)                                                                      \
    EXPORTED ssize_t name(const char* path, const char* attribute, void* value, size_t size) {     \
        static ssize_t (*real)(const char*, const char*, void*, size_t);                           \
        const long bus = busAt(AT_FDCWD, path, 0);                                                 \
        if (bus == MISSING_BUS) {                                                                  \
            return failed(ENOENT);                                                                 \
        }                                                                                          \
        return realFunction((void**)&real, #name)                                                  \
                   ? real(bus < 0 ? path : example, attribute, value, size)                        \
                   : failed(ENOSYS);                                                               \
    }

DEFINE_GETXATTR(getxattr)
DEFINE_GETXATTR(lgetxattr)

EXPORTED int faccessat(int directory, const char* path, int mode, int flags) {
    static int (*real)(int, const char*, int, int);
    const long bus = busNumber(directory, path);
    if (bus >= 0) {
        return accessBus(bus, mode);
    }
    return realFunction((void**)&real, "faccessat") ? real(directory, path, mode, flags)
                                                    : failed(ENOSYS);
}
