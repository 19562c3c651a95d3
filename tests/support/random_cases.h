// The number of random cases that a test runs, by the build that it is in.
#pragma once

#include "tests/support/emulation.h"

namespace zolt::test {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
constexpr bool isSanitized = __has_feature(address_sanitizer);
#else
constexpr bool isSanitized = false;
#endif

/// How many random cases a test runs here: @p number, but a quarter of them under a sanitizer and
/// an eighth in an emulator, which take so much longer. The plain builds run them all.
inline unsigned randomCases(unsigned number) {
    return isEmulated() ? number / 8 : isSanitized ? number / 4 : number;
}

} // namespace zolt::test
