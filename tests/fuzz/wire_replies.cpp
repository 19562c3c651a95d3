// Lets the preload library's side of a connection perform ioctls, reads and writes, while the
// server replies with any datagrams: of any length and result, for other requests, or none. A call
// must end with a result within its bounds, or with an errno of the kernel. AddressSanitizer
// watches the ends of the caller's buffers. The linker's --wrap sends the datagrams here.
#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/wire.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

// NOLINTBEGIN(bugprone-reserved-identifier): --wrap demands these names.
extern "C" {
ssize_t __wrap_sendmsg(int descriptor, const msghdr* message, int flags);
ssize_t __wrap_recvmsg(int descriptor, msghdr* message, int flags);
}

namespace {

using zolt::fuzz::Bytes;
using zolt::fuzz::require;
using Memory = std::vector<std::uint8_t>;

constexpr std::array receiveErrors{EINTR, EAGAIN, EFAULT, ECONNRESET};

Bytes* replies = nullptr; // of the running input
WireRequest asked{};      // the last request's head
std::size_t requestLength = 0;

ssize_t failed(int error) {
    errno = error;
    return -1;
}

std::size_t lengthOf(const msghdr& message) {
    std::size_t length = 0;
    for (const iovec& piece : std::span(message.msg_iov, message.msg_iovlen)) {
        length += piece.iov_len;
    }
    return length;
}

// Fills the pieces as the kernel does. Returns the length that fits.
ssize_t deliver(const msghdr& message, const Memory& datagram) {
    std::span rest(datagram);
    for (const iovec& piece : std::span(message.msg_iov, message.msg_iovlen)) {
        const auto front = rest.first(std::min(piece.iov_len, rest.size()));
        std::ranges::copy(front, static_cast<std::uint8_t*>(piece.iov_base));
        rest = rest.subspan(front.size());
    }
    return static_cast<ssize_t>(datagram.size() - rest.size());
}

// A caller's buffer, whose ends AddressSanitizer watches.
Memory buffer(std::size_t size) {
    return Memory(size, 0x5A);
}

void requireResult(long result, std::size_t highest) {
    if (result < 0) {
        require(result == -1 && errno > 0 && errno < 4096);
    } else {
        require(static_cast<std::size_t>(result) <= highest);
    }
}

void transfer(int descriptor, Bytes& bytes) {
    std::array<Memory, 4> buffers;
    std::vector<i2c_msg> messages;
    for (unsigned count = bytes.take() % (buffers.size() + 1); count > 0; --count) {
        const std::uint8_t flags = bytes.take();
        const std::size_t length =
            bytes.take() % 8 == 7 ? bytes.take16() % 9000 : bytes.take() % 80;
        buffers[count - 1] = buffer(length);
        if (length > 0) {
            buffers[count - 1][0] = bytes.take();
        }
        messages.push_back(
            {.addr = bytes.take16(),
             .flags = static_cast<std::uint16_t>((flags % 2 != 0 ? I2C_M_RD : 0) |
                                                 (flags % 8 == 7 ? I2C_M_RECV_LEN : 0)),
             .len = static_cast<std::uint16_t>(length),
             .buf = buffers[count - 1].data()});
    }
    i2c_rdwr_ioctl_data given{.msgs = messages.data(),
                              .nmsgs = static_cast<std::uint32_t>(messages.size())};
    requireResult(busIoctl(descriptor, I2C_RDWR, &given), messages.size());
}

void access(int descriptor, Bytes& bytes) {
    const auto data = std::make_unique<i2c_smbus_data>();
    std::ranges::copy(bytes.takeBytes(sizeof data->block), data->block);
    i2c_smbus_ioctl_data given{.read_write = static_cast<std::uint8_t>(bytes.take() % 3),
                               .command = bytes.take(),
                               .size = bytes.take() % 10U,
                               .data = bytes.take() % 8 == 7 ? nullptr : data.get()};
    requireResult(busIoctl(descriptor, I2C_SMBUS, &given), 0);
}

void call(int descriptor, Bytes& bytes) {
    const std::uint8_t kind = bytes.take();
    switch (kind % 8) {
    case 0:
        transfer(descriptor, bytes);
        break;
    case 1:
        access(descriptor, bytes);
        break;
    case 2: {
        Memory read = buffer(bytes.take16() % 9000);
        requireResult(busRead(descriptor, read.data(), read.size()), read.size());
        break;
    }
    case 3: {
        const Memory written = buffer(bytes.take16() % 9000);
        requireResult(busWrite(descriptor, written.data(), written.size()), written.size());
        require(written == buffer(written.size()));
        break;
    }
    case 4: {
        unsigned long functions = 0;
        require(busIoctl(descriptor, I2C_FUNCS, &functions) == 0);
        break;
    }
    default: {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel's ioctls take numbers so.
        auto* const number = reinterpret_cast<void*>(std::uintptr_t{bytes.take32()});
        constexpr std::array<unsigned long, 8> requests{
            I2C_SLAVE, I2C_SLAVE_FORCE, I2C_TENBIT, I2C_PEC, I2C_RETRIES, I2C_TIMEOUT, 0x0799, 0};
        requireResult(busIoctl(descriptor, requests[bytes.take() % requests.size()], number), 0);
        break;
    }
    }
}

} // namespace

ssize_t __wrap_sendmsg(int /*descriptor*/, const msghdr* message, int /*flags*/) {
    const std::uint8_t how = replies->take();
    if (how >= 0xF0) {
        constexpr std::array errors{EINTR, EPIPE, EFAULT, ENOBUFS};
        return failed(errors[how % errors.size()]);
    }
    require(message->msg_iov[0].iov_len == sizeof asked);
    std::memcpy(&asked, message->msg_iov[0].iov_base, sizeof asked);
    requestLength = lengthOf(*message);
    require(asked.kind >= WIRE_OPEN && asked.kind <= WIRE_CHECKSUMS);
    require(requestLength <= WIRE_LONGEST);
    return static_cast<ssize_t>(requestLength);
}

// Behind the end of the input, the server is gone.
ssize_t __wrap_recvmsg(int /*descriptor*/, msghdr* message, int /*flags*/) {
    if (replies->atEnd()) {
        return 0;
    }
    const std::uint8_t how = replies->take();
    const std::size_t wanted = lengthOf(*message);
    Memory datagram;
    switch (how % 8) {
    case 0:
        return failed(receiveErrors[how / 8U % receiveErrors.size()]);
    case 1:
        return deliver(*message, replies->takeBytes(replies->take() % 16));
    case 2:
        datagram.resize(sizeof(WireReply) + replies->take16());
        break;
    case 3:
        datagram.resize(sizeof(WireReply));
        break;
    default:
        datagram.resize(wanted);
        break;
    }
    const WireReply head{.result = how < 0x80 ? replies->take() % 64
                                              : static_cast<std::int32_t>(replies->take32()),
                         .ticket = how / 16 % 8 == 7 ? replies->take32() : asked.ticket};
    std::memcpy(datagram.data(), &head, sizeof head);
    const std::size_t filled = std::min<std::size_t>(datagram.size() - sizeof head, 64);
    std::ranges::copy(replies->takeBytes(filled), datagram.begin() + sizeof head);
    return deliver(*message, datagram);
}
// NOLINTEND(bugprone-reserved-identifier)

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Always ready to be read, so that nothing waits.
    static const int descriptor = open("/dev/zero", O_RDWR | O_CLOEXEC);
    Bytes bytes(data, size);
    replies = &bytes;
    constexpr unsigned mostCalls = 50;
    for (unsigned calls = 0; !bytes.atEnd() && calls < mostCalls; ++calls) {
        call(descriptor, bytes);
    }
    replies = nullptr;
    return 0;
}
