// The control registers report: main menu option 5.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

constexpr std::uint8_t allModuleClasses = 15; ///< selects every class, in the order of the menu

/// Prints every control register of a module class, one line a register, for all its instances.
/// A register that cannot be read is reported in its place.
///
/// @param moduleSelector  a module class from 1 to 14, or allModuleClasses; any other shows
/// nothing.
/// @return statusDone, whatever could be read.
Status showControlRegisters(std::uint8_t moduleSelector);

} // namespace zolt
