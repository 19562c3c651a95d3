// Numbers as printf lays them out, composed at the end of a text.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace zolt {

/// The most characters that a number takes.
constexpr std::size_t longestNumber = 20;

namespace detail {

// The two digits of each number below 100.
inline constexpr auto digitPairs = [] {
    std::array<char, 200> digits{};
    for (unsigned number = 0; number < 100; ++number) {
        digits[2 * number] = static_cast<char>('0' + number / 10);
        digits[2 * number + 1] = static_cast<char>('0' + number % 10);
    }
    return digits;
}();

char* appendLongDecimal(char* end, long long number, unsigned width);

} // namespace detail

/// As %0Nd does, with @p width for N, up to 9: zeros fill it up, the sign counts, and it never
/// cuts.
/// @return where the text now ends.
inline char* appendDecimal(char* end, long long number, unsigned width = 0) {
    // Most flags, counts and indices have one digit or two.
    const auto value = static_cast<unsigned long long>(number);
    if (value <= 9 && width <= 1) {
        *end = static_cast<char>('0' + value);
        return end + 1;
    }
    if (value <= 99 && width <= 2) {
        std::copy_n(&detail::digitPairs[2 * value], 2, end);
        return end + 2;
    }
    return detail::appendLongDecimal(end, number, width);
}

/// As %0NX does, or %0Nx, according to @p digits.
char* appendHexadecimal(char* end, unsigned long long number, unsigned width, const char* digits);

} // namespace zolt
