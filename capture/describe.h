// Turns an observation into a board description.
#pragma once

#include "capture/observation.h"

#include <string>
#include <vector>

namespace capture {

/// What stands in the head of the description.
struct Head {
    std::string date;    ///< like "2026-11-21 14:03 UTC"
    std::string version; ///< of the program
    bool masked = false;
};

/// Returns the description, in TOML. A board that is loaded from it shows all that was observed.
[[nodiscard]] std::string describe(const Observation& observation, const Head& head);

/// One line for each read that failed, for people: the thing and its status.
[[nodiscard]] std::vector<std::string> failuresIn(const Observation& observation);

} // namespace capture
