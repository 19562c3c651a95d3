// The command line of zolt_board.
#pragma once

#include "console/options.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zolt_board {

struct Verb;

/// When a text has colours.
enum class Colour : std::uint8_t { automatic, always, never };

struct Arguments {
    const Verb* verb = nullptr;        ///< null: only --help or --version
    std::vector<std::string> boards{}; ///< files, names of boards, or "-"
    bool json = false;
    bool tree = false;
    bool list = false; ///< lists the kinds of findings; no board is named then
    Colour colour = Colour::automatic;
    bool help = false; ///< of the verb, or else of the program
    bool version = false;
};

/// A wrong command line; what() says what is wrong.
using ArgumentsError = zolt::OptionError;

/// Reads the command line. Reads no further than --help or --version. @throw ArgumentsError
[[nodiscard]] Arguments parseArguments(int argc, char* const argv[]);

/// The text of --help. @param verb  null: the text about the whole program
[[nodiscard]] std::string usage(const Verb* verb);

} // namespace zolt_board
