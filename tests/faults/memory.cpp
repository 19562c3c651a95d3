// The memory allocations of the tool and of the libraries that it calls: counted, made to fail, and
// followed until they are given back.
#include "tests/faults/cell.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

// The C library's own functions, whatever replaces malloc.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace faults {

namespace {

struct Block {
    void* memory;
    std::size_t size;
    long number;
};

// A hash table with open addressing. A place whose memory is null has never been used.
constexpr std::size_t places = std::size_t{1} << 14;
Block blocks[places];
char givenBack; // its address marks a place that is free again
std::size_t used = 0;
long allocations = 0;

std::size_t placeOf(const void* memory) {
    return (reinterpret_cast<std::uintptr_t>(memory) >> 4) * 0x9E3779B1U % places;
}

void remember(void* memory, std::size_t size) {
    if (memory == nullptr || !toolRuns()) {
        return;
    }
    std::size_t place = placeOf(memory);
    while (blocks[place].memory != nullptr && blocks[place].memory != &givenBack) {
        place = (place + 1) % places;
    }
    if (blocks[place].memory == nullptr && ++used > places - places / 4) {
        std::abort();
    }
    blocks[place] = {memory, size, allocations};
}

void forget(const void* memory) {
    if (used == 0 || memory == nullptr) {
        return;
    }
    for (std::size_t place = placeOf(memory); blocks[place].memory != nullptr;
         place = (place + 1) % places) {
        if (blocks[place].memory == memory) {
            blocks[place].memory = &givenBack;
            return;
        }
    }
}

std::string_view baseName(const char* path) {
    const std::string_view name = path == nullptr ? "?" : path;
    return name.substr(name.rfind('/') + 1);
}

// Counts an allocation. Returns whether it has to fail. A failure within a call shows in the call's
// result; any other gets a record of its own, which names the function that asked for the memory.
bool mustFail(std::size_t size, const void* caller) {
    if (!toolRuns()) {
        return false;
    }
    ++allocations;
    if (allocations != cell.allocation) {
        return false;
    }
    countFailure();
    if (!insideCall()) {
        const Quiet quiet;
        Dl_info info{};
        (void)dladdr(caller, &info);
        const std::string_view library = baseName(info.dli_fname);
        log("alloc\t%llu\t%ld\t%zu %.*s\t%s\n", static_cast<unsigned long long>(printed),
            allocations, size, static_cast<int>(library.size()), library.data(),
            info.dli_sname == nullptr ? "?" : info.dli_sname);
    }
    errno = ENOMEM;
    return true;
}

void* remembered(void* memory, std::size_t size) {
    remember(memory, size);
    return memory;
}

} // namespace

long allocationsSoFar() {
    return allocations;
}

void logAllocationsLeft() {
    for (const Block& block : blocks) {
        if (block.memory != nullptr && block.memory != &givenBack) {
            log("left\t%llu\t%ld\t%zu\t-\n", static_cast<unsigned long long>(printed), block.number,
                block.size);
        }
    }
}

} // namespace faults

extern "C" {

void* malloc(std::size_t size) {
    return faults::mustFail(size, __builtin_return_address(0))
               ? nullptr
               : faults::remembered(__libc_malloc(size), size);
}

void* calloc(std::size_t count, std::size_t size) {
    return faults::mustFail(count * size, __builtin_return_address(0))
               ? nullptr
               : faults::remembered(__libc_calloc(count, size), count * size);
}

void* realloc(void* memory, std::size_t size) {
    if (faults::mustFail(size, __builtin_return_address(0))) {
        return nullptr;
    }
    void* const moved = __libc_realloc(memory, size);
    if (moved != nullptr || size == 0) {
        faults::forget(memory);
    }
    return faults::remembered(moved, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    return faults::mustFail(size, __builtin_return_address(0))
               ? nullptr
               : faults::remembered(__libc_memalign(alignment, size), size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return faults::mustFail(size, __builtin_return_address(0))
               ? nullptr
               : faults::remembered(__libc_memalign(alignment, size), size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    if (faults::mustFail(size, __builtin_return_address(0))) {
        return ENOMEM;
    }
    *memory = faults::remembered(__libc_memalign(alignment, size), size);
    return *memory == nullptr ? ENOMEM : 0;
}

void free(void* memory) {
    faults::forget(memory);
    __libc_free(memory);
}
}
// NOLINTEND(bugprone-reserved-identifier)
