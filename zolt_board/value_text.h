// Values of the service in findings.
#pragma once

#include "board/service_model.h"

#include <string>

namespace zolt_board {

/// A value for people: a number in decimal, a text in quotes, a list in parentheses with at most
/// eight elements and without lists in it. It has no control characters.
[[nodiscard]] std::string valueText(const board::Value& value);

} // namespace zolt_board
