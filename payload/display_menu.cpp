#include "payload/display_menu.h"

#include "console/hex_dump.h"
#include "console/input.h"
#include "console/output.h"

#include <algorithm>

namespace zolt {

namespace {

constexpr std::int8_t rawDump = 1;
constexpr std::int8_t humanReadable = 2;
constexpr std::int8_t goBack = 3;

} // namespace

void show(const Display& display, std::int8_t choice) {
    switch (choice) {
    case rawDump:
        printHexDump(
            display.dumpAddress, display.bytes,
            static_cast<std::uint32_t>(std::min(display.dumpLength, display.bytes.size())));
        break;
    case humanReadable:
        display.decode(display.bytes, printField);
        break;
    case goBack:
        break;
    default:
        write("Invalid option entered\n");
    }
}

Status showByChoice(std::uint8_t format, const std::function<void(std::int8_t)>& view) {
    if (format != 0) {
        view(static_cast<std::int8_t>(format));
        return statusDone;
    }
    std::int8_t choice = 0;
    while (choice != goBack) {
        write("1 : Raw Dump\n"
              "2 : Human Readable\n"
              "3 : Go Back\n");
        if (readByte(choice) != Reading::number) {
            write("scanf error\n");
            return statusNothingToShow;
        }
        view(choice);
    }
    return statusDone;
}

} // namespace zolt
