// The options of one-shot mode.
#pragma once

#include "app/dispatcher.h"

#include <cstdint>

namespace zolt {

/// What the command line asks for. The last three are for option 9 alone.
struct CommandLine {
    OptionArgs arguments{.deviceType = 0}; ///< -o -p -d -m -f; an absent -d is device type 0
    std::uint8_t index = 0;                ///< -i: index of the new nodes
    std::int32_t parentBus = -1;           ///< -n: the N of the parent's /dev/i2c-N
    std::uint32_t targetAddress = 0;       ///< -t: address of the new device on its bus
};

/// Parses the options -o -p -d -i -n -t -m -f, each with a decimal number. The last of a repeated
/// letter counts, a number is cut to its field's width, text that is no number is 0, and an unknown
/// letter or a missing number is reported by getopt on standard error and otherwise ignored.
[[nodiscard]] CommandLine parseCommandLine(int argc, char* const argv[]);

} // namespace zolt
