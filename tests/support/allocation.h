// Makes the areas run out that the tool allocates with a look at the outcome.
#pragma once

namespace zolt::test {

/// While one lives, `new (std::nothrow) T[n]` yields null.
class NoScratchMemory {
public:
    NoScratchMemory();
    NoScratchMemory(const NoScratchMemory&) = delete;
    NoScratchMemory& operator=(const NoScratchMemory&) = delete;
    ~NoScratchMemory();
};

} // namespace zolt::test
