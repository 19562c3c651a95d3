// Texts composed of parts: words, and numbers in decimal.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zolt_board {

namespace detail {

inline void append(std::string& text, std::string_view part) {
    text.append(part);
}
template <std::integral Number>
void append(std::string& text, Number number) {
    text.append(std::to_string(number));
}

} // namespace detail

template <typename... Parts>
[[nodiscard]] std::string joined(const Parts&... parts) {
    std::string text;
    (detail::append(text, parts), ...);
    return text;
}

/// A number as 0x002A, with at least so many digits.
[[nodiscard]] std::string inHex(std::uint32_t number, unsigned digits = 2);

/// A byte as 0x2A, several ones as "2A 01", at most 8 of them; no bytes as "no bytes".
[[nodiscard]] std::string bytesText(std::span<const std::uint8_t> bytes);

/// A number and its noun: "1 byte", "2 bytes".
template <std::integral Number>
[[nodiscard]] std::string counted(Number count, std::string_view noun) {
    return joined(count, " ", noun, count == 1 ? "" : "s");
}

} // namespace zolt_board
