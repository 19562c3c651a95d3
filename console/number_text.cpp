#include "console/number_text.h"

#include <algorithm>
#include <charconv>

namespace zolt {

namespace {

char* appendAnyDecimal(char* end, long long number, unsigned width) {
    auto value = static_cast<unsigned long long>(number);
    if (number < 0) {
        *end++ = '-';
        value = 0 - value;
        width -= width > 0 ? 1 : 0;
    }
    for (unsigned long long limit = 10; width > 1; --width, limit *= 10) {
        // Add a zero for each digit that the number lacks.
        if (value < limit) {
            end = std::fill_n(end, width - 1, '0');
            break;
        }
    }
    return std::to_chars(end, end + longestNumber, value).ptr;
}

} // namespace

char* detail::appendLongDecimal(char* end, long long number, unsigned width) {
    if (number < 100 || number > 999 || width > 3) {
        return appendAnyDecimal(end, number, width);
    }
    // Three digits, as most byte values have: no loop.
    const auto value = static_cast<unsigned>(number);
    *end = static_cast<char>('0' + value / 100);
    std::copy_n(&digitPairs[std::size_t{2} * (value % 100)], 2, end + 1);
    return end + 3;
}

char* appendHexadecimal(char* end, unsigned long long number, unsigned width, const char* digits) {
    unsigned count = 1;
    while (count < 16 && number >> (4 * count) != 0) {
        ++count;
    }
    for (count = std::max(count, width); count > 0; --count) {
        *end++ = digits[number >> (4 * (count - 1)) & 0xF];
    }
    return end;
}

} // namespace zolt
