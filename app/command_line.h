// The options of one-shot mode.
#pragma once

#include "app/dispatcher.h"

#include <cstdint>

namespace zolt {

/// The parsed command line. Only option 9 uses index, parentBus and targetAddress.
struct CommandLine {
    OptionArgs arguments{.deviceType = 0}; ///< -o -p -d -m -f; without -d, device type 0
    std::uint8_t index = 0;                ///< -i: index of the new nodes
    std::int32_t parentBus = -1;           ///< -n: the N of the parent's /dev/i2c-N
    std::uint32_t targetAddress = 0;       ///< -t: address of the new device on its bus
};

/// Parses the options -o -p -d -i -n -t -m -f, each with a decimal number. The last of a repeated
/// option counts. A number keeps only the low bits that fit its field. Text that is no number
/// counts as 0. getopt reports an unknown option or a missing number on standard error; the parser
/// ignores such an option.
[[nodiscard]] CommandLine parseCommandLine(int argc, char* const argv[]);

} // namespace zolt
