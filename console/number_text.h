// Composes numbers at the end of a text, as printf lays them out.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace zolt {

/// The length of the longest number: 64 bits in decimal, with a sign.
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

/// Appends a number at @p end as printf's %0Nd does. @p width is N, 0 to 9: zeros fill the width,
/// the sign counts as one character, and a longer number is not cut.
/// @return the new end of the text.
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

/// Appends a number at @p end as printf's %0NX or %0Nx does; @p width is N.
/// @param digits  the sixteen digits, in upper or lower case.
/// @return the new end of the text.
char* appendHexadecimal(char* end, unsigned long long number, unsigned width, const char* digits);

} // namespace zolt
