// The control registers report: main menu option 5.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

constexpr std::uint8_t allModuleClasses = 15; ///< selects all classes, in the order of the menu

/// Prints every control register of a module class, one line per register, for all instances. A
/// register that cannot be read gets an error line instead.
///
/// @param moduleSelector  a module class from 1 to 14, or allModuleClasses; any other value shows
///                        nothing.
/// @return statusDone, even when registers could not be read.
Status showControlRegisters(std::uint8_t moduleSelector);

} // namespace zolt
