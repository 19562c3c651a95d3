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

} // namespace zolt::test
