// A second preload library, which makes /dev/zero look like an I2C device of this machine that
// answers. It replaces the two functions by which the stand-in's library looks at files: syscall()
// and the next fstatat().
#undef _FILE_OFFSET_BITS
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

enum { ARGUMENTS = 6, I2C_DEVICE_MAJOR = 89 };

static const unsigned zeroMajor = 1;
static const unsigned zeroMinor = 5;

long syscall(long number, ...) {
    static long (*real)(long number, ...);
    long given[ARGUMENTS];
    struct statx status = {0};
    va_list arguments;
    va_start(arguments, number);
    for (int i = 0; i < ARGUMENTS; ++i) {
        given[i] = va_arg(arguments, long);
    }
    va_end(arguments);
    if (real == NULL) {
        *(void**)&real = dlsym(RTLD_NEXT, "syscall");
    }
    if (number == SYS_ioctl && given[1] == I2C_FUNCS &&
        real(SYS_statx, given[0], "", AT_EMPTY_PATH, STATX_TYPE, &status) == 0 &&
        status.stx_rdev_major == zeroMajor && status.stx_rdev_minor == zeroMinor) {
        return 0;
    }
    const long result = real(number, given[0], given[1], given[2], given[3], given[4], given[5]);
    if (number == SYS_statx && result == 0) {
        struct statx* const told = (struct statx*)given[4]; // NOLINT(performance-no-int-to-ptr)
        if (told->stx_rdev_major == zeroMajor && told->stx_rdev_minor == zeroMinor) {
            told->stx_rdev_major = I2C_DEVICE_MAJOR;
        }
    }
    return result;
}

// NOLINTBEGIN(bugprone-macro-parentheses): a type takes no parentheses.
#define DEFINE_FSTATAT(name, type)                                                                 \
    int name(int directory, const char* path, type* status, int flags) {                           \
        static int (*real)(int, const char*, type*, int);                                          \
        if (real == NULL) {                                                                        \
            *(void**)&real = dlsym(RTLD_NEXT, #name);                                              \
        }                                                                                          \
        const int result = real(directory, path, status, flags);                                   \
        if (result == 0 && status->st_rdev == makedev(zeroMajor, zeroMinor)) {                     \
            status->st_rdev = makedev(I2C_DEVICE_MAJOR, zeroMinor);                                \
        }                                                                                          \
        return result;                                                                             \
    }
// NOLINTEND(bugprone-macro-parentheses)

DEFINE_FSTATAT(fstatat, struct stat)
DEFINE_FSTATAT(fstatat64, struct stat64)
