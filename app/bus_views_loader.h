// The bus views, loaded when an option first needs them.
#pragma once

#include "bus/bus_views.h"

namespace zolt {

/// Loads the library of the bus views, once.
/// @throws std::runtime_error with the loader's text when the library is not there, or is of no
/// use; the next call tries again.
[[nodiscard]] const BusViews& busViews();

} // namespace zolt
