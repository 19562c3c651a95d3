// The dispatcher: runs the operation of an option number with its arguments.
//
// One table has a row for each option: its number, its label in the main menu, the question for a
// missing argument, and the operation. The main menu prints the same rows.
#pragma once

#include "console/status.h"
#include "i2c/device_types.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

constexpr std::uint8_t exitOption = 100;

/// The arguments of an option. The defaults mean "not given".
struct OptionArgs {
    std::uint8_t option = 0;                         ///< operation, 1 to 15
    std::uint8_t picpwrId = 0;                       ///< options 1, 2, 3, 6; 0: the option asks
    std::uint8_t deviceType = DEVICE_TYPE_NOT_GIVEN; ///< options 7 and 8
    std::uint8_t moduleSelector = 0; ///< module class of option 5, module type of option 12
    std::uint8_t format = 0;         ///< options 2, 3, 4: 1 raw dump, 2 human readable
};

/// The question that an option asks the operator when an argument was not given.
struct Question {
    std::uint8_t OptionArgs::*argument; ///< the argument that the answer fills
    bool (*isMissing)(std::uint8_t);    ///< whether the option must ask at this value
    void (*prompt)();                   ///< prints the menu and the prompt
    std::uint8_t highestAnswer;         ///< a higher answer fails; the operation does not run
};

/// One option.
struct OptionRow {
    std::uint8_t number;
    std::string_view label;
    const Question* question; ///< null when the operation itself asks or needs no argument
    Status (*run)(const OptionArgs& arguments);
};

/// All options, in the order of the menu and of their numbers.
[[nodiscard]] std::span<const OptionRow> optionRows();

/// Runs one option: asks for a missing argument, runs the operation, and reports a failure. A
/// number without a row does nothing. Exceptions of the operation pass through.
void runOption(OptionArgs given);

/// Runs one option as runOption() does. A std::exception ends the option, not the program; the
/// function prints its message.
void runOptionGuarded(const OptionArgs& given);

} // namespace zolt
