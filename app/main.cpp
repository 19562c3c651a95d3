// zolt_test, the ZOLT Test Tool: without arguments a menu, with arguments one operation.
#include "app/command_line.h"
#include "app/interactive.h"
#include "app/one_shot.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// A standard stream that was closed before the start must not become a bus device: the next open
// would take its number, and the report would be written to the device.
void holdStandardStreams() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            (void)open("/dev/null", O_RDWR);
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    holdStandardStreams();
    if (argc == 1) {
        zolt::runInteractive();
    } else {
        zolt::runOneShot(zolt::parseCommandLine(argc, argv));
    }
    return 0;
}
