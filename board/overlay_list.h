// Lays an array of tables over that of a base.
#pragma once

#include "board/overlay_rules.h"

#include <functional>

namespace board {

/// Lays one table over one table of the base; @p over gets the result.
using LayTable = std::function<void(toml::table& over, toml::table& base)>;

/// Finds the element of the base that each table changes or takes out, by the keys of its identity
/// or by its position. A table that finds none is new. @p over gets the result.
/// @param layout  of kind list
void layListOver(toml::array& over, toml::array& base, const Layout& layout,
                 const OverlayRules& rules, const LayTable& lay);

} // namespace board
