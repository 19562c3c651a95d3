#include "tests/faults/cell.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

namespace faults {

Cell cell;
std::uint64_t printed = 0;

namespace {

char* logStart = nullptr;
std::size_t logRoom = 0;
bool running = false;
int quiet = 0; // wrappers at work
int depth = 0; // real calls at work
long calls = 0;

struct LogHead {
    std::uint64_t length;
    std::uint64_t failures;
};

LogHead& logHead() {
    return *reinterpret_cast<LogHead*>(logStart);
}

void append(std::string_view text) {
    LogHead& head = logHead();
    if (logRoom < sizeof head + head.length + text.size()) {
        std::abort(); // a run that never ends
    }
    text.copy(logStart + sizeof head + head.length, text.size());
    head.length += text.size();
}

} // namespace

void beginLog(char* log, std::size_t size) {
    logStart = log;
    logRoom = size;
    printed = 0;
    calls = 0;
    logHead() = {};
}

void countFailure() {
    ++logHead().failures;
}

void log(const char* format, ...) {
    std::array<char, 1024> text;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    append({text.data(), std::min(static_cast<std::size_t>(length), text.size() - 1)});
}

void logBytes(const void* bytes, std::size_t count) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (count == 0) {
        append("-");
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = static_cast<const std::uint8_t*>(bytes)[i];
        const std::array<char, 2> text{digits[byte >> 4], digits[byte & 0xF]};
        append({text.data(), text.size()});
    }
}

bool toolRuns() {
    return running && quiet == 0;
}

bool insideCall() {
    return depth > 0;
}

Quiet::Quiet() {
    ++quiet;
}

Quiet::~Quiet() {
    --quiet;
}

void startTool() {
    running = true;
}

int enterReal() {
    ++depth;
    return std::exchange(quiet, 0);
}

void leaveReal(int before) {
    quiet = before;
    --depth;
}

void logException(const char* text) {
    log("throw %s", text);
}

Call::Call(const char* kind, std::string_view asked) : counts_(running && depth == 0) {
    ++quiet;
    if (!counts_) {
        return;
    }
    ++calls;
    ordered_ = cell.call != 0 && calls >= cell.call && calls < cell.call + cell.calls;
    log("%s\t%llu\t%ld\t%.*s\t", kind, static_cast<unsigned long long>(printed), allocationsSoFar(),
        static_cast<int>(asked.size()), asked.data());
}

Call::~Call() {
    if (counts_) {
        log("\n");
    }
    --quiet;
}

bool Call::fails(std::string_view way) const {
    if (!ordered_ || way != cell.way) {
        return false;
    }
    countFailure();
    return true;
}

void Call::throwIfOrdered() const {
    if (fails("bad_alloc")) {
        logException(std::bad_alloc().what());
        throw std::bad_alloc();
    }
    if (fails("exception")) {
        const std::runtime_error error("the board is gone");
        logException(error.what());
        throw error; // NOLINT(*-throw-by-value-catch-by-reference,cert-err09-cpp,cert-err61-cpp):
                     // logged before
    }
}

} // namespace faults
