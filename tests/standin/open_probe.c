// Opens a path with every function of the C library that opens files, and prints the outcome of
// each: "bus" for a descriptor that answers as an I2C bus, "nothing" for one that fails as an I2C
// bus without a device, "file" for any other, or the error. Without a path the probe checks
// standard input, which another program has opened.
//
// If the path is relative, the 64-bit variants of openat() get a descriptor of the current
// directory, and the current directory is another one meanwhile.
#undef _FILE_OFFSET_BITS
#undef _FORTIFY_SOURCE

#include <errno.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): these are the C library's names.
int __open(const char* path, int flags, ...);
int __open64(const char* path, int flags, ...);
int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);
int __openat_2(int directory, const char* path, int flags);
int __openat64_2(int directory, const char* path, int flags);
// NOLINTEND(bugprone-reserved-identifier)

static void tell(const char* name, int descriptor) {
    unsigned long functions = 0;
    if (descriptor < 0) {
        printf("%s: %s\n", name, strerror(errno));
        return;
    }
    const char* const kind = ioctl(descriptor, I2C_FUNCS, &functions) == 0 ? "bus"
                             : errno == ENODEV                             ? "nothing"
                                                                           : "file";
    const int flags = fcntl(descriptor, F_GETFD);
    printf("%s: %s%s\n", name, kind, (flags & FD_CLOEXEC) != 0 ? ", closed on exec" : "");
    close(descriptor);
}

static void tellStream(const char* name, FILE* stream) {
    int copy = -1;
    if (stream != NULL) {
        const int closes = fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC;
        copy = fcntl(fileno(stream), closes != 0 ? F_DUPFD_CLOEXEC : F_DUPFD, 0);
    }
    tell(name, copy);
    if (stream != NULL) {
        (void)fclose(stream);
    }
}

int main(int argc, char* argv[]) {
    if (argc == 1) {
        tell("inherited", dup(STDIN_FILENO));
        return 0;
    }
    const char* const path = argv[1];
    tell("open", open(path, O_RDWR));
    tell("open64", open64(path, O_RDWR | O_CLOEXEC));
    tell("__open", __open(path, O_RDWR));
    tell("__open64", __open64(path, O_RDWR));
    tell("__open_2", __open_2(path, O_RDWR));
    tell("__open64_2", __open64_2(path, O_RDWR));
    tell("openat", openat(AT_FDCWD, path, O_RDWR));
    tell("__openat_2", __openat_2(AT_FDCWD, path, O_RDWR));
    const int directory = path[0] == '/' ? -1 : open(".", O_RDONLY | O_DIRECTORY);
    if (directory >= 0 && chdir("/proc") != 0) {
        return EXIT_FAILURE;
    }
    tell("openat64", openat64(directory, path, O_RDWR));
    tell("__openat64_2", __openat64_2(directory, path, O_RDWR));
    if (directory >= 0 && fchdir(directory) != 0) {
        return EXIT_FAILURE;
    }
    if (argc == 2) { // with a second argument the path must not be created
        tell("creat", creat(path, 0600));
        tell("creat64", creat64(path, 0600));
    }
    tellStream("fopen", fopen(path, "r+"));
    tellStream("fopen64", fopen64(path, "r+e"));
    tellStream("freopen", freopen(path, "r+", stdin));
    tellStream("freopen64", freopen64(path, "r+e", stderr));
    return 0;
}
