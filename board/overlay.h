// Lays a board description over its base: the result is one description, which the loader reads
// like any other one. Each value keeps the place where it was read.
#pragma once

#include "board/toml_table.h"

namespace board {

/// Gives a description all that it does not change of its base. docs/board-description.md describes
/// how the elements of arrays are found, and how things are taken out.
///
/// @param over    gets the result
/// @param base    a base that is complete itself; it is used up
/// @param errors  if given, gets the errors; else the first error is thrown
void layOver(toml::table& over, toml::table base, Errors* errors);

/// Refuses the keys that only a description with a base may have.
void refuseChanges(toml::table& description, Errors* errors);

} // namespace board
