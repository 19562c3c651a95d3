// Makes the allocations fail whose failure the tool handles: new (std::nothrow).
#pragma once

namespace zolt::test {

/// While an object of this class exists, `new (std::nothrow) T[n]` returns null.
class NoScratchMemory {
public:
    NoScratchMemory();
    NoScratchMemory(const NoScratchMemory&) = delete;
    NoScratchMemory& operator=(const NoScratchMemory&) = delete;
    ~NoScratchMemory();
};

} // namespace zolt::test
