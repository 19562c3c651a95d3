// The dispatcher: from an option number and its arguments to one operation.
//
// One table holds every option with its number, its label in the main menu, what it still has to
// ask for, and the operation. The main menu prints the same rows.
#pragma once

#include "console/status.h"
#include "i2c/device_types.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

constexpr std::uint8_t exitOption = 100;

/// What an option runs with; the defaults mean "not given".
struct OptionArgs {
    std::uint8_t option = 0;   ///< operation, 1 to 15
    std::uint8_t picpwrId = 0; ///< options 1, 2, 3, 6; 0 also stands for all once asked for
    std::uint8_t deviceType = DEVICE_TYPE_NOT_GIVEN; ///< options 7 and 8
    std::uint8_t moduleSelector = 0; ///< module class of option 5, module type of option 12
    std::uint8_t format = 0;         ///< options 2, 3, 4: 1 raw dump, 2 human readable
};

/// What an option asks the operator for when it was not given.
struct Question {
    std::uint8_t OptionArgs::*argument; ///< the argument that the answer fills
    bool (*isMissing)(std::uint8_t);    ///< whether the option asks for it, at this value
    void (*prompt)();                   ///< menu and prompt
    std::uint8_t highestAnswer;         ///< a higher answer is a failure; nothing is run
};

/// One option.
struct OptionRow {
    std::uint8_t number;
    std::string_view label;
    const Question* question; ///< null when the operation asks for itself or needs nothing
    Status (*run)(const OptionArgs& arguments);
};

/// All options in the order of the menu, which is that of their numbers.
[[nodiscard]] std::span<const OptionRow> optionRows();

/// Runs one option: asks for what is missing, runs the operation, and says so when it failed.
/// An option without a row does nothing. Exceptions of the operation pass through.
void runOption(OptionArgs given);

/// Runs one option as runOption() does. An exception of the standard's ends the option, not the
/// program: its message is printed.
void runOptionGuarded(const OptionArgs& given);

} // namespace zolt
