// Values of the system bus as a board description writes them.
#pragma once

#include "board/document.h"
#include "board/service_model.h"

namespace board {

[[nodiscard]] WrittenValue written(const Value& value);

/// A value with its type: as it is if its type is that of a plain value, else with the signature.
[[nodiscard]] WrittenValue written(const Property& property);

} // namespace board
