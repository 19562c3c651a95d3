#include "tests/support/bus_devices.h"

#include "tests/support/console.h"
#include "tests/support/wrapped_calls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <set>
#include <sstream>
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

void note(const std::string& call) {
    busDevices().calls.push_back(call);
    busDevices().printed.push_back(handedOut());
}

int openDevice(const std::string& path, int flags) {
    note("open " + path + (flags == O_RDWR ? " O_RDWR" : " " + std::to_string(flags)));
    const auto refused = busDevices().openErrors.find(path);
    if (refused != busDevices().openErrors.end()) {
        errno = refused->second;
        return -1;
    }
    return *descriptors().insert(__real_open("/dev/null", O_RDWR)).first;
}

// Whether every byte of the ioctl's argument that belongs to no field is zero.
bool isPaddingZero(const i2c_rdwr_ioctl_data& transfer) {
    constexpr std::size_t end = offsetof(i2c_rdwr_ioctl_data, nmsgs) + sizeof(transfer.nmsgs);
    constexpr std::size_t messageEnd = offsetof(i2c_msg, len) + sizeof(i2c_msg::len);
    const auto isZero = [](const void* from, std::size_t begin, std::size_t behind) {
        const auto* bytes = static_cast<const std::uint8_t*>(from);
        return std::all_of(bytes + begin, bytes + behind, [](auto byte) { return byte == 0; });
    };
    return isZero(&transfer, end, sizeof(transfer)) &&
           std::all_of(transfer.msgs, transfer.msgs + transfer.nmsgs, [&](const i2c_msg& message) {
               return isZero(&message, messageEnd, offsetof(i2c_msg, buf));
           });
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
    note(text);
    EXPECT_TRUE(isPaddingZero(transfer)) << text;
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

static int openAs(const char* /*name*/, const char* path, int flags, mode_t mode) {
    return zolt::test::isBus(path) ? zolt::test::openDevice(path, flags)
                                   : __real_open(path, flags, mode);
}

WRAP_OPEN(__wrap_open, openAs)
// Code that is compiled for 64-bit file offsets calls open by this name.
WRAP_OPEN(__wrap_open64, openAs)

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
    zolt::test::note("close");
    const int result = __real_close(descriptor);
    errno = EBADMSG;
    return result;
}
// NOLINTEND(bugprone-reserved-identifier)
