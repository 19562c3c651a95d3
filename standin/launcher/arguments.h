// The command line of zolt_sim.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace standin {

struct Arguments {
    std::string board = "demo";      ///< a file, or the name of a board that comes with the tool
    std::vector<std::string> faults; ///< rules, to be ordered behind those of the board description
    std::string debugLog;            ///< file for the debug log's lines; empty: they are dropped
    std::string callLog;             ///< file for the calls of the platform's libraries
    std::string i2cLog;              ///< file for the control transactions of the bus driver
    bool help = false;
    bool version = false;
    char* const* command = nullptr; ///< the command with its arguments, null-terminated
};

/// Says what is wrong with the command line.
class ArgumentsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the command line up to the command. @throw ArgumentsError
[[nodiscard]] Arguments parseArguments(int argc, char* const argv[]);

/// What zolt_sim takes, for --help.
[[nodiscard]] const char* usage();

} // namespace standin
