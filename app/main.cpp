// zolt_test, the ZOLT Test Tool. Without arguments it shows a menu, with arguments it runs one
// operation.
#include "app/command_line.h"
#include "app/interactive.h"
#include "app/one_shot.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// Opens /dev/null for each standard stream that is closed at the start. Otherwise the next opened
// bus device would take the stream's number, and the tool would write its report to the device.
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
