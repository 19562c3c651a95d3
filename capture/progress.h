// How far a capture is.
#pragma once

#include <functional>
#include <string_view>

namespace capture {

/// Is called before each step of a part: the part, the number of steps done, and of all steps.
using Progress = std::function<void(std::string_view part, unsigned done, unsigned all)>;

/// Shows nothing.
inline void noProgress(std::string_view /*part*/, unsigned /*done*/, unsigned /*all*/) {}

} // namespace capture
