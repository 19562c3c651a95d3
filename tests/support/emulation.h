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

/// How many random cases a test runs here: @p number, but an eighth of them in an emulator, which
/// takes ten times as long. The other builds run them all.
inline unsigned randomCases(unsigned number) {
    return isEmulated() ? number / 8 : number;
}

} // namespace zolt::test
