#include "standin/i2c_bus/preload/bus_path.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdbool.h>
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum {
    LONGEST_BUS_NUMBER = 9, // digits
};

static const char devices[] = "/dev";
static const char usual[] = "/dev/i2c-";
static const char name[] = "i2c-";

// The number that a text consists of; -1 for any other text.
static inline long numberIn(const char* digits) {
    long number = 0;
    size_t length = 0;
    for (; digits[length] >= '0' && digits[length] <= '9'; ++length) {
        if (length == LONGEST_BUS_NUMBER) {
            return -1;
        }
        number = number * 10 + (digits[length] - '0');
    }
    return length == 0 || digits[length] != '\0' || (length > 1 && digits[0] == '0') ? -1 : number;
}

static bool identify(int directory, const char* path, struct statx* identity) {
    return syscall(SYS_statx, directory, path, 0, STATX_INO, identity) == 0;
}

// Whether the first bytes of a path, all but its last component, lead to /dev. The function must
// not become part of its caller: a signal handler may have no room for its buffer, and most files
// that a handler opens do not need one.
__attribute__((noinline)) static bool leadsToDevices(int directory, const char* path,
                                                     size_t length) {
    char parent[PATH_MAX] = ".";
    struct statx found;
    struct statx expected;
    if (length > 0) {
        memcpy(parent, path, length);
        parent[length] = '\0';
    }
    return identify(directory, parent, &found) && identify(AT_FDCWD, devices, &expected) &&
           found.stx_ino == expected.stx_ino && found.stx_dev_major == expected.stx_dev_major &&
           found.stx_dev_minor == expected.stx_dev_minor;
}

long usualBusNumber(const char* path) {
    const size_t length = sizeof(usual) - 1;
    return path != NULL && strncmp(path, usual, length) == 0 ? numberIn(path + length) : -1;
}

long otherBusNumber(int directory, const char* path) {
    if (path == NULL) {
        return -1;
    }
    const char* const slash = strrchr(path, '/');
    const char* const last = slash == NULL ? path : slash + 1;
    if (strncmp(last, name, sizeof(name) - 1) != 0) {
        return -1;
    }
    const int before = errno;
    const long number = numberIn(last + sizeof(name) - 1);
    const bool isBus = number >= 0 && strlen(path) < PATH_MAX && // the kernel refuses longer paths
                       leadsToDevices(directory, path, (size_t)(last - path));
    errno = before;
    return isBus ? number : -1;
}
