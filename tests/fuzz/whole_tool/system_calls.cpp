// The console and the I2C devices. The linker's --wrap sends the tool's system calls here.
#include "tests/fuzz/whole_tool/session.h"
#include "tests/support/wrapped_calls.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): --wrap demands these names.
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_ioctl(int descriptor, unsigned long request, ...);
ssize_t __real_write(int descriptor, const void* bytes, std::size_t count);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...);
int __wrap_ioctl(int descriptor, unsigned long request, ...);
ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t count);
}

namespace zolt::fuzz {

namespace {

// At the end of the input, the tool runs its last option again and again. The fuzzer lets it do so
// for this number of menus. Then the operator comes back and ends the tool.
constexpr unsigned menusBehindEnd = 3;
constexpr std::string_view menuPrompt = "Enter option :";

constexpr char unreadable = '\xFF'; // a typed byte at which the read fails

FILE* usualInput = nullptr;

int failed(int error) {
    errno = error;
    return -1;
}

// An errno that the kernel knows.
int errorOf(Bytes& answer) {
    return answer.take() % 133 + 1;
}

// A terminal delivers a line at a time.
ssize_t readTyped(void* /*cookie*/, char* buffer, std::size_t size) {
    std::string_view& typed = session->typed;
    if (typed.starts_with(unreadable)) {
        typed.remove_prefix(1);
        return failed(EIO);
    }
    const std::string_view line =
        typed.substr(0, std::min({typed.find(unreadable), typed.find('\n'), size - 1}) + 1);
    const std::size_t length =
        line.substr(0, line.size() - (line.ends_with(unreadable) ? 1 : 0)).copy(buffer, size);
    typed.remove_prefix(length);
    session->inputEnded = session->inputEnded || length == 0;
    return static_cast<ssize_t>(length);
}

void print(std::string_view text) {
    constexpr std::size_t most = std::size_t{256} << 20; // no session prints as much
    session->printed.append(text);
    require(session->printed.size() < most);
    if (session->inputEnded && session->printed.ends_with(menuPrompt) &&
        ++session->menusBehindEnd == menusBehindEnd) {
        clearerr(stdin);
        session->typed = "100\n";
    }
}

// A text that a failed write loses counts as printed: the tool must not print it again.
ssize_t writeConsole(std::string_view text) {
    const std::uint8_t how = session->console.take();
    if (goesWell(how)) {
        print(text);
        return static_cast<ssize_t>(text.size());
    }
    if (how < 0xE0) {
        text = text.substr(0, how - 0xC0U + 1);
        print(text);
        return static_cast<ssize_t>(text.size());
    }
    constexpr std::array errors{EAGAIN, EINTR, EIO, ENOSPC};
    const int error = errors[how % errors.size()];
    if (error != EAGAIN && error != EINTR) {
        print(text);
    }
    return failed(error);
}

int openBus() {
    Bytes& answer = nextAnswer();
    return goesWell(answer.take()) ? __real_open("/dev/null", O_RDWR) : failed(errorOf(answer));
}

// The bus driver: refuses, or gives any reply.
int transfer(const i2c_rdwr_ioctl_data& given) {
    require(given.nmsgs == 1 || given.nmsgs == 2);
    const i2c_msg& record = given.msgs[0];
    require(record.addr == 0 && record.flags == 0x0080 && record.len == 164);
    require(std::string_view(reinterpret_cast<const char*>(record.buf), 4) == "TESK");
    Bytes& answer = nextAnswer();
    if (!goesWell(answer.take())) {
        return failed(errorOf(answer));
    }
    if (given.nmsgs == 2) {
        const i2c_msg& reply = given.msgs[1];
        require(reply.addr == 0 && reply.flags == I2C_M_RD && (reply.len == 4 || reply.len == 8));
        std::ranges::copy(answer.takeBytes(reply.len), reply.buf);
    }
    return static_cast<int>(given.nmsgs);
}

} // namespace

TypedInput::TypedInput() {
    usualInput = stdin;
    stdin = fopencookie(nullptr, "r",
                        {.read = readTyped, .write = nullptr, .seek = nullptr, .close = nullptr});
    require(stdin != nullptr);
}

TypedInput::~TypedInput() {
    (void)std::fclose(stdin);
    stdin = usualInput;
}

} // namespace zolt::fuzz

static int openAs(const char* /*name*/, const char* path, int flags, mode_t mode) {
    if (zolt::fuzz::session != nullptr) {
        zolt::fuzz::require(zolt::test::isBus(path) && flags == O_RDWR);
        return zolt::fuzz::openBus();
    }
    return __real_open(path, flags, mode);
}

WRAP_OPEN(__wrap_open, openAs)
// Code that is compiled for 64-bit file offsets calls open by this name.
WRAP_OPEN(__wrap_open64, openAs)

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == I2C_RDWR) {
        return zolt::fuzz::transfer(*static_cast<i2c_rdwr_ioctl_data*>(argument));
    }
    return __real_ioctl(descriptor, request, argument);
}

ssize_t __wrap_write(int descriptor, const void* bytes, std::size_t count) {
    if (zolt::fuzz::session != nullptr && descriptor == STDOUT_FILENO) {
        return zolt::fuzz::writeConsole({static_cast<const char*>(bytes), count});
    }
    return __real_write(descriptor, bytes, count);
}
// NOLINTEND(bugprone-reserved-identifier)
