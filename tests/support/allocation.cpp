#include "tests/support/allocation.h"

#include <new>

namespace {

bool exhausted = false;

} // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (exhausted) {
        return nullptr;
    }
    try {
        return operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace zolt::test {

NoScratchMemory::NoScratchMemory() {
    exhausted = true;
}

NoScratchMemory::~NoScratchMemory() {
    exhausted = false;
}

} // namespace zolt::test
