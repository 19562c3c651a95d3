#include "console/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace zolt {

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) != -1;
}

void holdStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (!isOpen(descriptor)) {
            (void)open("/dev/null", O_RDWR);
        }
    }
}

} // namespace zolt
