#include "standin/i2c_bus/preload/interposed.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum {
    LONGEST_BUS_NUMBER = 9, // digits
};

long busNumber(const char* path) {
    static const char prefix[] = "/dev/i2c-";
    long number = 0;
    size_t length = 0;
    if (path == NULL || strncmp(path, prefix, sizeof(prefix) - 1) != 0) {
        return -1;
    }
    const char* const digits = path + sizeof(prefix) - 1;
    for (; digits[length] >= '0' && digits[length] <= '9'; ++length) {
        if (length == LONGEST_BUS_NUMBER) {
            return -1;
        }
        number = number * 10 + (digits[length] - '0');
    }
    return length == 0 || digits[length] != '\0' || (length > 1 && digits[0] == '0') ? -1 : number;
}

bool isRealBus(int descriptor) {
    const int before = errno;
    struct statx status;
    const bool isKnown =
        syscall(SYS_statx, descriptor, "", AT_EMPTY_PATH, STATX_TYPE, &status) == 0;
    errno = before;
    return isKnown && S_ISCHR(status.stx_mode) && status.stx_rdev_major == I2C_DEVICE_MAJOR;
}

bool realFunction(void** function, const char* name) {
    if (*function == NULL) {
        *function = dlsym(RTLD_NEXT, name);
    }
    return *function != NULL;
}
