// The command line of zolt_sim.
#pragma once

#include "standin/launcher/logs.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace standin {

struct Arguments {
    std::string board = "demo";      ///< a file, or the name of a board that comes with the tool
    std::vector<std::string> faults; ///< rules, added after those of the board description
    LogFiles logs;
    bool kernelBuses = false; ///< put the I2C buses into the kernel
    bool check = false;       ///< check boards instead of running a command
    bool list = false;        ///< print lists instead of running a command
    bool help = false;
    bool version = false;
    char* const* command = nullptr; ///< the command with its arguments, the boards to check, or
                                    ///< the names of lists; null-terminated
};

/// A wrong command line; what() says what is wrong.
class ArgumentsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the command line up to the command. @throw ArgumentsError
[[nodiscard]] Arguments parseArguments(int argc, char* const argv[]);

/// The text of --help.
[[nodiscard]] std::string usage();

} // namespace standin
