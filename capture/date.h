// The date in the head of a description.
#pragma once

#include <optional>
#include <string>

namespace capture {

/// A date like "2026-11-21 14:03 UTC".
/// @param epoch  seconds since 1970 as text, the value of SOURCE_DATE_EPOCH; null: now
/// @return none if the text is not such a number
[[nodiscard]] std::optional<std::string> dateOf(const char* epoch);

} // namespace capture
