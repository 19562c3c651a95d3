// Looks at a path with every function of the C library that tells its status, and prints the
// outcome of each: mode and device number, or the ways in which the path may be used, or the error.
// Without a path the probe looks at standard input.
//
// If the path is relative, the last functions get a descriptor of the current directory, and the
// current directory is another one meanwhile.
#undef _FILE_OFFSET_BITS

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

static struct stat status;
static struct stat64 status64;
static struct statx extended;

static void tell(const char* name, int result, unsigned mode, unsigned major, unsigned minor) {
    if (result != 0) {
        printf("%s: %s\n", name, strerror(errno));
    } else {
        printf("%s: %o %u:%u\n", name, mode, major, minor);
    }
}

static void tell32(const char* name, int result) {
    tell(name, result, status.st_mode, major(status.st_rdev), minor(status.st_rdev));
}

static void tell64(const char* name, int result) {
    tell(name, result, status64.st_mode, major(status64.st_rdev), minor(status64.st_rdev));
}

static void tellExtended(const char* name, int result) {
    tell(name, result, extended.stx_mode, extended.stx_rdev_major, extended.stx_rdev_minor);
}

static void tellAccess(const char* name, int existing, int using, int executing) {
    printf("%s:%s%s%s\n", name, existing == 0 ? " there" : "", using == 0 ? " usable" : "",
           executing == 0 ? " executable" : "");
}

int main(int argc, char* argv[]) {
    if (argc != 2) {
        tell32("fstat", fstat(0, &status));
        tell64("fstat64", fstat64(0, &status64));
        tell32("fstatat", fstatat(0, "", &status, AT_EMPTY_PATH));
        tellExtended("statx", statx(0, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &extended));
        return 0;
    }
    const char* const path = argv[1];
    tell32("stat", stat(path, &status));
    tell64("stat64", stat64(path, &status64));
    tell32("lstat", lstat(path, &status));
    tell64("lstat64", lstat64(path, &status64));
    tell32("fstatat", fstatat(AT_FDCWD, path, &status, 0));
    tellAccess("access", access(path, F_OK), access(path, R_OK | W_OK), access(path, X_OK));
    tellAccess("eaccess", eaccess(path, F_OK), eaccess(path, R_OK | W_OK), eaccess(path, X_OK));
    tellAccess("euidaccess", euidaccess(path, F_OK), euidaccess(path, R_OK | W_OK),
               euidaccess(path, X_OK));
    const int directory = path[0] == '/' ? -1 : open(".", O_RDONLY | O_DIRECTORY);
    if (directory >= 0 && chdir("/proc") != 0) {
        return EXIT_FAILURE;
    }
    tell64("fstatat64", fstatat64(directory, path, &status64, 0));
    tellExtended("statx", statx(directory, path, 0, STATX_BASIC_STATS, &extended));
    tellAccess("faccessat", faccessat(directory, path, F_OK, 0),
               faccessat(directory, path, R_OK | W_OK, 0), faccessat(directory, path, X_OK, 0));
    return 0;
}
