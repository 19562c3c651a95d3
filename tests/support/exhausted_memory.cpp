#include "tests/support/exhausted_memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool exhausted = false;

void* allocate(std::size_t size) noexcept {
    return exhausted ? nullptr : std::malloc(size);
}

} // namespace

void* operator new(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace zolt::test {

ExhaustedMemory::ExhaustedMemory() {
    exhausted = true;
}

ExhaustedMemory::~ExhaustedMemory() {
    exhausted = false;
}

} // namespace zolt::test
