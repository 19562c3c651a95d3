// Lets the memory run out for one thread.
#pragma once

namespace zolt::test {

/// While an object of this class exists, every `new` of the thread that made it fails: it throws
/// std::bad_alloc or, with std::nothrow, returns null.
class ExhaustedMemory {
public:
    ExhaustedMemory();
    ExhaustedMemory(const ExhaustedMemory&) = delete;
    ExhaustedMemory& operator=(const ExhaustedMemory&) = delete;
    ~ExhaustedMemory();
};

} // namespace zolt::test
