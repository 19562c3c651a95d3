// The build names the emulator of user programs that runs the tests. Such an emulator runs one
// program: each program that a test starts belongs to this machine.
#pragma once

#include <cstdlib>

namespace zolt::test {

/// Tells whether an emulator runs this program.
inline bool isEmulated() {
    const char* const emulator = std::getenv("EMULATOR");
    return emulator != nullptr && *emulator != '\0';
}

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
