// A verb of zolt_board. The row of a verb stands in the verb's own file, beside its function.
#pragma once

#include "zolt_board/arguments.h"
#include "zolt_board/output.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace zolt_board {

/// The lowest exit statuses are those of diff(1). A verb says what 1 means.
enum ExitStatus : int { nothingFound = 0, somethingFound = 1, failed = 2 };

struct Verb {
    std::string_view name;
    std::string_view arguments;                ///< for the usage: "[option]... BOARD"
    std::string_view summary;                  ///< half a line, for the help of the program
    std::string_view help;                     ///< lines, for the help of the verb
    std::string_view status;                   ///< what the exit statuses mean, in lines
    std::span<const std::string_view> options; ///< long names of the options that it takes
    std::size_t fewestBoards;
    std::size_t mostBoards;

    /// Writes to the output, and returns the exit status. The program prints the output at the end.
    /// An exception ends the program with ExitStatus::failed and the exception's text.
    int (*run)(const Arguments& arguments, Output& output);
};

/// The verbs, in the order of the help.
[[nodiscard]] std::span<const Verb* const> verbs();

} // namespace zolt_board
