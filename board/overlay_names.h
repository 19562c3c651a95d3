// Lays tables over those of a base whose keys are names, numbers or raw addresses of things. In
// such a table 'remove' is a name like any other.
#pragma once

#include "board/overlay_rules.h"

namespace board {

/// Each key replaces the same thing of the base. { remove = true } takes the thing out. @p over
/// gets the rest of the base.
/// @param layout  of kind names, numbers or registers
void layNamesOver(toml::table& over, toml::table& base, const Layout& layout,
                  const OverlayRules& rules);

} // namespace board
