#include "tests/support/bus_devices.h"

#include "console/output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <set>
#include <sstream>
#include <string_view>
#include <sys/types.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): --wrap demands these names.
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_ioctl(int descriptor, unsigned long request, ...);
int __real_close(int descriptor);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open64(const char* path, int flags, ...);
int __wrap_ioctl(int descriptor, unsigned long request, ...);
int __wrap_close(int descriptor);
}

namespace zolt::test {

namespace {

std::set<int>& descriptors() {
    static std::set<int> open;
    return open;
}

int openDevice(const std::string& path, int flags) {
    busDevices().calls.push_back("open " + path +
                                 (flags == O_RDWR ? " O_RDWR" : " " + std::to_string(flags)));
    const auto refused = busDevices().openErrors.find(path);
    if (refused != busDevices().openErrors.end()) {
        errno = refused->second;
        return -1;
    }
    return *descriptors().insert(__real_open("/dev/null", O_RDWR)).first;
}

// Returns all that standard output has received, if it is a file.
std::string printedSoFar() {
    flush();
    const off_t size = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
    const ssize_t length = pread(STDOUT_FILENO, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return text;
}

std::string describe(const i2c_msg& message) {
    std::array<char, 64> text;
    (void)std::snprintf(text.data(), text.size(), " [0x%04X 0x%04X %u]", message.addr,
                        message.flags, message.len);
    return text.data();
}

int answer(unsigned long request, const i2c_rdwr_ioctl_data& transfer) {
    std::array<char, 32> call;
    (void)std::snprintf(call.data(), call.size(), "ioctl 0x%04lX:", request);
    std::string text = call.data();
    for (unsigned i = 0; i < transfer.nmsgs; ++i) {
        text += describe(transfer.msgs[i]);
    }
    busDevices().calls.push_back(text);
    const i2c_msg& first = transfer.msgs[0];
    const i2c_msg& last = transfer.msgs[transfer.nmsgs - 1];
    busDevices().records.emplace_back(first.buf, first.buf + first.len);
    if (transfer.nmsgs > 1) {
        busDevices().replyAreas.emplace_back(last.buf, last.buf + last.len);
    }
    if (busDevices().answers.empty()) {
        ADD_FAILURE() << "an ioctl without a scripted answer: " << text;
        errno = ENOTTY;
        return -1;
    }
    const BusAnswer given = busDevices().answers.front();
    busDevices().answers.pop_front();
    if (given.error != 0) {
        errno = given.error;
        return -1;
    }
    const std::size_t room = transfer.nmsgs > 1 ? last.len : 0;
    EXPECT_EQ(given.reply.size(), room) << "size of the scripted reply to " << text;
    std::copy_n(given.reply.begin(), std::min(given.reply.size(), room), last.buf);
    return given.result;
}

} // namespace

BusDevices& busDevices() {
    static BusDevices instance;
    return instance;
}

void resetBusDevices() {
    busDevices() = {};
}

std::size_t openBusDevices() {
    return descriptors().size();
}

Bytes bytesOf(const std::string& hexadecimal) {
    std::istringstream text(hexadecimal);
    text >> std::hex;
    Bytes bytes;
    for (unsigned value = 0; text >> value;) {
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

Bytes controlRecord(const std::map<std::size_t, std::string>& fields) {
    Bytes record(164);
    for (const auto& [offset, hexadecimal] : fields) {
        std::ranges::copy(bytesOf(hexadecimal), record.begin() + static_cast<ssize_t>(offset));
    }
    return record;
}

} // namespace zolt::test

int __wrap_open(const char* path, int flags, ...) {
    if (std::string_view(path).starts_with("/dev/i2c-")) {
        return zolt::test::openDevice(path, flags);
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return __real_open(path, flags, mode);
}

// Code that is compiled for 64-bit file offsets calls open by this name.
int __wrap_open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return __wrap_open(path, flags, mode);
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (!zolt::test::descriptors().contains(descriptor)) {
        return __real_ioctl(descriptor, request, argument);
    }
    return zolt::test::answer(request, *static_cast<i2c_rdwr_ioctl_data*>(argument));
}

int __wrap_close(int descriptor) {
    if (zolt::test::descriptors().erase(descriptor) == 0) {
        return __real_close(descriptor);
    }
    zolt::test::busDevices().calls.emplace_back("close");
    zolt::test::busDevices().printed.push_back(zolt::test::printedSoFar());
    const int result = __real_close(descriptor);
    errno = EBADMSG;
    return result;
}
// NOLINTEND(bugprone-reserved-identifier)
