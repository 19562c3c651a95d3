// The system calls of the tool: of a bus device, and on the console.
#undef _FILE_OFFSET_BITS // open and open64 are two functions here

#include "tests/faults/cell.h"
#include "tests/faults/console.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <unistd.h>

namespace {

using faults::Call;
using faults::log;
using faults::logBytes;
using faults::next;
using faults::printed;
using faults::real;

int busDescriptor = -1; // the tool has one bus open at a time
constexpr int writesAfterInput = 8;

const char* answers = ""; // the lines that the operator still types
bool inputEnded = false;
int writesLeft = writesAfterInput;

// Logs the result of a system call, and keeps its errno.
template <typename Result>
Result logged(Result result) {
    const int error = errno;
    log("%lld %d", static_cast<long long>(result), result < 0 ? error : 0);
    errno = error;
    return result;
}

int failed(int error) {
    errno = error;
    return logged(-1);
}

int openAs(const char* name, const char* path, int flags, mode_t mode) {
    if (!zolt::test::isBus(path)) {
        return next<int(const char*, int, ...)>(name)(path, flags, mode);
    }
    const Call call("open", path);
    if (call.fails("errno")) {
        return failed(call.amount());
    }
    busDescriptor =
        real(call, [&] { return next<int(const char*, int, ...)>(name)(path, flags, mode); });
    return logged(busDescriptor);
}

// A line of the operator, as a terminal delivers it. A read that fails loses the line.
ssize_t readConsole(void* /*unused*/, char* buffer, std::size_t size) {
    const Call call("read", "");
    std::size_t length = std::strcspn(answers, "\n");
    length += answers[length] == '\n' ? 1 : 0;
    if (call.fails("errno")) {
        answers += length;
        return failed(call.amount());
    }
    length = call.fails("end") ? 0 : std::min(length, size);
    length = call.fails("short") ? std::min<std::size_t>(length, 1) : length;
    std::copy_n(answers, length, buffer);
    answers += length;
    inputEnded = length == 0;
    log("%zu ", length);
    logBytes(buffer, length);
    return static_cast<ssize_t>(length);
}

} // namespace

namespace faults {

// The C library reads standard input by a call that no library can replace. A stream of its own
// can.
void setAnswers(const char* text) {
    answers = text;
    stdin = fopencookie(nullptr, "r",
                        {.read = readConsole, .write = nullptr, .seek = nullptr, .close = nullptr});
}

} // namespace faults

extern "C" {

WRAP_OPEN(open, openAs)
WRAP_OPEN(open64, openAs)

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const auto function = next<int(int, unsigned long, ...)>("ioctl");
    if (descriptor != busDescriptor || request != I2C_RDWR) {
        return function(descriptor, request, argument);
    }
    const Call call("ioctl", "");
    const auto* const transfer = static_cast<const i2c_rdwr_ioctl_data*>(argument);
    for (std::uint32_t i = 0; i < transfer->nmsgs; ++i) {
        const i2c_msg& message = transfer->msgs[i];
        log("%s%u,%u,", i == 0 ? "" : ",", message.addr, message.flags);
        if ((message.flags & I2C_M_RD) == 0) {
            logBytes(message.buf, message.len);
        } else {
            log("%u", message.len);
        }
    }
    log(" ");
    if (call.fails("errno")) {
        log("-1 %d -", call.amount());
        errno = call.amount();
        return -1;
    }
    if (call.fails("short")) { // the driver takes fewer messages, and delivers nothing
        log("%d 0 -", call.amount());
        return call.amount();
    }
    const int result = logged(real(call, [&] { return function(descriptor, request, argument); }));
    const int error = errno;
    const i2c_msg& last = transfer->msgs[transfer->nmsgs - 1];
    log(" ");
    logBytes(last.buf, result >= 0 && (last.flags & I2C_M_RD) != 0 ? last.len : 0);
    errno = error;
    return result;
}

int close(int descriptor) {
    const auto function = next<decltype(close)>("close");
    if (descriptor != busDescriptor || descriptor < 0) {
        const int result = function(descriptor);
        // The next file could have this number.
        if (result < 0 && errno == EBADF && faults::toolRuns() && !faults::insideCall()) {
            const Call call("close", "of a descriptor that is not open");
            logged(result);
        }
        return result;
    }
    const Call call("close", "");
    busDescriptor = -1;
    const int result = real(call, [&] { return function(descriptor); });
    return call.fails("errno") ? failed(call.amount()) : logged(result);
}

ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    const auto function = next<decltype(write)>("write");
    if (descriptor != STDOUT_FILENO || !faults::toolRuns()) {
        return function(descriptor, bytes, count);
    }
    std::array<char, 24> asked;
    (void)std::snprintf(asked.data(), asked.size(), "%zu", count);
    const Call call("write", asked.data());
    // At the end of the input the menu repeats the last option without end.
    if (inputEnded && call.counts() && --writesLeft == 0) {
        log("0 0\ncut\t%llu\t0\t-\t-\n", static_cast<unsigned long long>(printed));
        _exit(0);
    }
    if (call.fails("signal")) {
        log("signal");
        (void)raise(call.amount());
    }
    if (call.fails("errno")) {
        return failed(call.amount());
    }
    const ssize_t written = logged(function(descriptor, bytes, call.fails("short") ? 1 : count));
    printed += written > 0 ? static_cast<std::size_t>(written) : 0;
    return written;
}
}
