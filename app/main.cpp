// zolt_test, the ZOLT Test Tool. Without arguments it shows a menu, with arguments it runs one
// operation.
#include "app/command_line.h"
#include "app/interactive.h"
#include "app/one_shot.h"
#include "console/standard_streams.h"

int main(int argc, char* argv[]) {
    zolt::holdStandardStreams();
    if (argc == 1) {
        zolt::runInteractive();
    } else {
        zolt::runOneShot(zolt::parseCommandLine(argc, argv));
    }
    return 0;
}
