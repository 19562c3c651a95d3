// The command line of zolt_capture.
#pragma once

#include "capture/node_properties.h"
#include "console/options.h"

#include <string>
#include <vector>

namespace capture {

struct Arguments {
    std::string output{}; ///< file to write; empty: standard output
    bool force = false;   ///< the file may exist
    bool mask = false;
    std::vector<NodeProperty> properties{};
    bool help = false;
    bool version = false;
};

/// A wrong command line; what() says what is wrong.
using ArgumentsError = zolt::OptionError;

/// Reads the command line. Reads no further than --help or --version. @throw ArgumentsError
[[nodiscard]] Arguments parseArguments(int argc, char* const argv[]);

/// The text of --help.
[[nodiscard]] std::string usage();

} // namespace capture
