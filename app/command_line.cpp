#include "app/command_line.h"

#include <cstdlib>
#include <unistd.h>

namespace zolt {

CommandLine parseCommandLine(int argc, char* const argv[]) {
    CommandLine line;
    OptionArgs& arguments = line.arguments;
    optind = 0; // resets getopt, which keeps its state between calls
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the tool has one thread.
    for (int letter = 0; (letter = getopt(argc, argv, "o:p:d:i:n:t:m:f:")) != -1;) {
        const long number = letter == '?' ? 0 : std::strtol(optarg, nullptr, 10);
        const auto byte = static_cast<std::uint8_t>(number);
        switch (letter) {
        case 'o':
            arguments.option = byte;
            break;
        case 'p':
            arguments.picpwrId = byte;
            break;
        case 'd':
            arguments.deviceType = byte;
            break;
        case 'm':
            arguments.moduleSelector = byte;
            break;
        case 'f':
            arguments.format = byte;
            break;
        case 'i':
            line.index = byte;
            break;
        case 'n':
            line.parentBus = static_cast<std::int32_t>(number);
            break;
        case 't':
            line.targetAddress = static_cast<std::uint32_t>(number);
            break;
        default:
            break;
        }
    }
    return line;
}

} // namespace zolt
