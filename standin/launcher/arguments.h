// The command line of zolt_sim.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace standin {

struct Arguments {
    std::string board = "demo";      ///< a file, or the name of a board that comes with the tool
    std::vector<std::string> faults; ///< rules, added after those of the board description
    std::string debugLog;            ///< file for the debug log; empty: no log
    std::string callLog;             ///< file for a log of the platform calls; empty: no log
    std::string i2cLog;              ///< file for a log of the I2C transactions; empty: no log
    bool check = false;              ///< check boards instead of running a command
    bool help = false;
    bool version = false;
    char* const* command = nullptr; ///< the command with its arguments, or the boards to check;
                                    ///< null-terminated
};

/// A wrong command line; what() says what is wrong.
class ArgumentsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads the command line up to the command. @throw ArgumentsError
[[nodiscard]] Arguments parseArguments(int argc, char* const argv[]);

/// The text of --help.
[[nodiscard]] const char* usage();

} // namespace standin
