// Reads and writes a device of a bus as a file. Arguments: the bus's path, the device's address.
#undef _FORTIFY_SOURCE

#include <errno.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

// NOLINTNEXTLINE(bugprone-reserved-identifier): the C library's name.
ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t room);

static void tell(const char* name, ssize_t result, const char* bytes) {
    if (result < 0) {
        printf("%s: %s\n", name, strerror(errno));
    } else {
        printf("%s: %zd %.*s\n", name, result, (int)result, bytes);
    }
}

int main(int argc, char* argv[]) {
    const char content[] = "\x05OTHER";
    char bytes[8] = "";
    if (argc != 3) {
        return EXIT_FAILURE;
    }
    const int bus = open(argv[1], O_RDWR | O_NONBLOCK);
    ioctl(bus, I2C_SLAVE, strtoul(argv[2], NULL, 0));
    tell("write", write(bus, content, 1), "");
    tell("read", read(bus, bytes, 6), bytes);
    tell("write", write(bus, content, 6), "");
    tell("write", write(bus, content, 1), "");
    tell("__read_chk", __read_chk(bus, bytes, 5, sizeof(bytes)), bytes);
    return EXIT_SUCCESS;
}
