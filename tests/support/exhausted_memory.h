// Lets the memory run out for one thread.
#pragma once

namespace zolt::test {

/// While one lives, every `new` of the thread that made it throws std::bad_alloc.
class ExhaustedMemory {
public:
    ExhaustedMemory();
    ExhaustedMemory(const ExhaustedMemory&) = delete;
    ExhaustedMemory& operator=(const ExhaustedMemory&) = delete;
    ~ExhaustedMemory();
};

} // namespace zolt::test
