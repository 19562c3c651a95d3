// Tells which paths lead to an I2C bus.
//
// The kernel would resolve many paths to /dev/i2c-N. A path leads to bus N when its last component
// is "i2c-N" and the components in front of it lead to /dev, however many they are, and even
// through ".." or a symbolic link. A symbolic link as the last component is not followed: the look
// would cost a system call for every file that a program opens. Such a link to a bus does not open
// it.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The N of "/dev/i2c-N", without leading zeros; -1 for any other path and for a null pointer.
long usualBusNumber(const char* path);

// The N of a path to /dev/i2c-N that is written otherwise. Only a path that ends with "i2c-N" takes
// system calls. Parameters and result are like those of busNumber().
long otherBusNumber(int directory, const char* path);

// The N of a path that leads to /dev/i2c-N; -1 for any other path and for a null pointer. A
// relative path starts from `directory`, a descriptor or AT_FDCWD. Leaves errno as it is, and is
// safe in a signal handler. The function is inline, so that the usual path costs its callers
// nothing beyond the first comparison.
static inline long busNumber(int directory, const char* path) {
    const long number = usualBusNumber(path);
    return number >= 0 ? number : otherBusNumber(directory, path);
}

#ifdef __cplusplus
}
#endif
