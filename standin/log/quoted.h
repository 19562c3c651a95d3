// Texts in log lines.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace standin {

/// The bytes in double quotes. Quotes, backslashes and bytes that are not printable ASCII are
/// written as \xNN.
[[nodiscard]] std::string quoted(std::span<const std::uint8_t> bytes);

} // namespace standin
