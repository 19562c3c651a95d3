// Tests the bus server through its socket, with the preload library's code as the client, and with
// clients that misbehave.
#include "standin/i2c_bus/server/bus_server.h"

#include "standin/i2c_bus/preload/bus_client.h"
#include "standin/i2c_bus/wire.h"
#include "tests/standin/bus_fault.h"
#include "tests/standin/control_request.h"
#include "tests/standin/running_bus_server.h"
#include "tests/support/emulation.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <linux/i2c-dev.h>
#include <optional>
#include <poll.h>
#include <set>
#include <sstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <thread>

// NOLINTBEGIN(bugprone-reserved-identifier): --wrap demands these names.
extern "C" {
int __real_accept4(int listener, sockaddr* address, socklen_t* length, int flags);
int __wrap_accept4(int listener, sockaddr* address, socklen_t* length, int flags);
}

namespace standin {
namespace {

// How the server's next calls of accept4() fail.
std::atomic<int> acceptError = 0;
std::atomic<int> failingAccepts = 0;
std::atomic<int> failedAccepts = 0;

using Bytes = std::vector<std::uint8_t>;

BusState twoBuses() {
    BusState state;
    EXPECT_EQ(busCoreAddBus(&state.core(), 5), 0);
    EXPECT_EQ(busCoreAddBus(&state.core(), 6), 0);
    EXPECT_EQ(state.addMemory(5, 0x50, {10, 11, 12, 13}, 1, false), 0);
    EXPECT_EQ(busCoreAddDeviceNode(&state.core(), 5, 0x51, 0, ""), 0);
    EXPECT_EQ(busCoreSetProperty(&state.core(), 5, 0, 8, 42), 0);
    const BusCoreFault fault = busFault(6, BUS_CORE_OPEN, EACCES);
    EXPECT_EQ(busCoreAddFault(&state.core(), &fault), 0);
    return state;
}

class BusServerTest : public testing::Test {
protected:
    explicit BusServerTest(BusState state = twoBuses()) : server_(std::move(state)) {
        setenv(WIRE_ENVIRONMENT, server_.socket().c_str(), 1);
    }

    static int rdwr(int bus, std::vector<i2c_msg>& messages) {
        i2c_rdwr_ioctl_data data{.msgs = messages.data(),
                                 .nmsgs = static_cast<std::uint32_t>(messages.size())};
        return busIoctl(bus, I2C_RDWR, &data);
    }
    static int rdwr(int bus, ControlRequest& request) { return rdwr(bus, request.messages); }

    [[nodiscard]] Descriptor rawClient() const {
        Descriptor client(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        server_.socket().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(
            connect(client.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        return client;
    }

    RunningBusServer server_;
};

TEST_F(BusServerTest, theServerDecidesWhatOpens) {
    const Descriptor bus(busOpen(5, true));
    EXPECT_GE(bus.number(), 0);
    EXPECT_TRUE(busIsOpen(bus.number()));
    EXPECT_EQ(busOpen(6, true), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(busOpen(7, true), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(BusServerTest, aBusThatDoesNotOpenStillExists) {
    errno = 7;
    EXPECT_TRUE(busIsThere(5));
    EXPECT_TRUE(busIsThere(6));
    EXPECT_FALSE(busIsThere(7));
    const Descriptor bus(busOpen(5, true));
    EXPECT_EQ(busOf(bus.number()), 5);
    EXPECT_EQ(busOf(STDIN_FILENO), -1);
    EXPECT_EQ(busOf(-1), -1);
    server_.stop();
    EXPECT_FALSE(busIsThere(5));
    EXPECT_EQ(busOf(bus.number()), -1);
    EXPECT_EQ(errno, 7);
}

TEST_F(BusServerTest, withoutAServerNothingOpens) {
    unsetenv(WIRE_ENVIRONMENT);
    EXPECT_EQ(busOpen(5, true), -1);
    EXPECT_EQ(errno, ENOENT);
    setenv(WIRE_ENVIRONMENT, (server_.socket() + "x").c_str(), 1);
    EXPECT_EQ(busOpen(5, true), -1);
    EXPECT_EQ(errno, ENXIO);
    setenv(WIRE_ENVIRONMENT, std::string(200, 'x').c_str(), 1);
    EXPECT_EQ(busOpen(5, true), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(BusServerTest, otherDescriptorsAreNoBuses) {
    errno = 7;
    EXPECT_FALSE(busIsOpen(STDIN_FILENO));
    EXPECT_FALSE(busIsOpen(-1));
    EXPECT_FALSE(busIsOpen(Descriptor(socket(AF_UNIX, SOCK_STREAM, 0)).number()));
    EXPECT_EQ(errno, 7);
}

TEST_F(BusServerTest, aControlTransactionIsAnswered) {
    const Descriptor bus(busOpen(5, true));
    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), 2);
    EXPECT_EQ(request.replyWord(0), 42);
}

TEST_F(BusServerTest, aRefusalLeavesTheReplyAlone) {
    const Descriptor bus(busOpen(5, true));
    ControlRequest request = getProperty(0, 9);
    std::ranges::fill(request.reply, std::uint8_t{0xEE});
    EXPECT_EQ(rdwr(bus.number(), request), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(request.reply, Bytes(4, 0xEE));
}

TEST_F(BusServerTest, theLongestTransferGoesBothWays) {
    const Descriptor bus(busOpen(5, true));
    std::vector<Bytes> areas(42, Bytes(8192, 0));
    std::vector<i2c_msg> messages;
    messages.reserve(areas.size());
    for (Bytes& area : areas) {
        messages.push_back({.addr = 0x50, .flags = 0, .len = 8192, .buf = area.data()});
    }
    EXPECT_EQ(rdwr(bus.number(), messages), 42);
    for (i2c_msg& message : messages) {
        message.flags = I2C_M_RD;
    }
    areas[41][8191] = 1;
    EXPECT_EQ(rdwr(bus.number(), messages), 42);
    EXPECT_EQ(areas[41][8191], 0);
}

// Makes a call that the driver refuses. Returns the error.
int refusal(const Descriptor& bus, unsigned long request, void* argument) {
    errno = 0;
    EXPECT_EQ(busIoctl(bus.number(), request, argument), -1);
    return errno;
}

TEST_F(BusServerTest, argumentsAreCheckedAsTheKernelDoes) {
    const Descriptor bus(busOpen(5, true));
    const auto refused = [&](unsigned long request, void* argument) {
        return refusal(bus, request, argument);
    };
    std::uint8_t byte = 0;
    std::vector<i2c_msg> messages(43, {.addr = 0x50, .flags = 0, .len = 0, .buf = &byte});
    i2c_rdwr_ioctl_data data{.msgs = messages.data(), .nmsgs = 0};
    EXPECT_EQ(refused(I2C_RDWR, &data), EINVAL);
    data.nmsgs = 43;
    EXPECT_EQ(refused(I2C_RDWR, &data), EINVAL);
    data = {.msgs = nullptr, .nmsgs = 1};
    EXPECT_EQ(refused(I2C_RDWR, &data), EINVAL);
    data = {.msgs = messages.data(), .nmsgs = 1};
    messages[0].len = 8193;
    EXPECT_EQ(refused(I2C_RDWR, &data), EINVAL);
    i2c_smbus_ioctl_data access{
        .read_write = 2, .command = 0, .size = I2C_SMBUS_QUICK, .data = nullptr};
    EXPECT_EQ(refused(I2C_SMBUS, &access), EINVAL);
    access = {.read_write = 1, .command = 0, .size = 9, .data = nullptr};
    EXPECT_EQ(refused(I2C_SMBUS, &access), EINVAL);
    access = {.read_write = 1, .command = 0, .size = I2C_SMBUS_BYTE, .data = nullptr};
    EXPECT_EQ(refused(I2C_SMBUS, &access), EINVAL);
    void* const beyondInt = reinterpret_cast<void*>(0x80000000);
    EXPECT_EQ(refused(I2C_RETRIES, beyondInt), EINVAL);
    EXPECT_EQ(refused(I2C_TIMEOUT, beyondInt), EINVAL);
    EXPECT_EQ(refused(0x07FF, &byte), ENOTTY);
    EXPECT_EQ(busIoctl(bus.number(), I2C_TENBIT, &byte), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE, reinterpret_cast<void*>(0x3FF)), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_TENBIT, nullptr), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_PEC, &byte), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_PEC, nullptr), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_RETRIES, nullptr), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_TIMEOUT, nullptr), 0);
}

TEST_F(BusServerTest, aLengthFromTheDeviceIsRefusedAsTheKernelDoes) {
    if (zolt::test::isEmulated()) {
        GTEST_SKIP() << "emulated: the emulator lacks the call that reads a process's memory";
    }
    const Descriptor bus(busOpen(5, true));
    const auto errorOf = [&](std::uint16_t flags, std::uint16_t length, std::uint8_t* bytes) {
        std::vector<i2c_msg> messages{{.addr = 0x50, .flags = flags, .len = length, .buf = bytes}};
        EXPECT_EQ(rdwr(bus.number(), messages), -1);
        return errno;
    };
    Bytes bytes(40);
    constexpr std::uint16_t read = I2C_M_RD | I2C_M_RECV_LEN;
    bytes[0] = 1;
    EXPECT_EQ(errorOf(read, 33, bytes.data()), EOPNOTSUPP);
    EXPECT_EQ(errorOf(read, 32, bytes.data()), EINVAL);
    EXPECT_EQ(errorOf(read, 0, bytes.data()), EINVAL);
    EXPECT_EQ(errorOf(I2C_M_RECV_LEN, 33, bytes.data()), EINVAL);
    EXPECT_EQ(errorOf(read, 33, nullptr), EFAULT);
    bytes[0] = 0;
    EXPECT_EQ(errorOf(read, 40, bytes.data()), EINVAL);
}

TEST_F(BusServerTest, theFirstMessageHoldsABufferThatMessagesShare) {
    const Descriptor bus(busOpen(5, true));
    std::uint8_t byte = 1;
    std::vector<i2c_msg> messages(3, {.addr = 0x50, .flags = I2C_M_RD, .len = 1, .buf = &byte});
    messages[0].flags = 0;
    EXPECT_EQ(rdwr(bus.number(), messages), 3);
    EXPECT_EQ(byte, 11);
}

TEST_F(BusServerTest, memoryThatIsNotThereIsRefused) {
    if (zolt::test::isEmulated()) {
        GTEST_SKIP() << "emulated: the emulator shortens a message that ends in memory that is not "
                        "there";
    }
    const Descriptor bus(busOpen(5, true));
    for (const int request : {I2C_RDWR, I2C_SMBUS, I2C_FUNCS}) {
        EXPECT_EQ(refusal(bus, static_cast<unsigned long>(request), nullptr), EFAULT);
    }
    i2c_msg message{.addr = 0x50, .flags = 0, .len = 4, .buf = nullptr};
    i2c_rdwr_ioctl_data data{.msgs = &message, .nmsgs = 1};
    EXPECT_EQ(refusal(bus, I2C_RDWR, &data), EFAULT);
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE, reinterpret_cast<void*>(0x50)), 0);
    EXPECT_EQ(busRead(bus.number(), nullptr, 1), -1);
    EXPECT_EQ(errno, EFAULT);
}

TEST_F(BusServerTest, aBusReportsItsFunctions) {
    const Descriptor bus(busOpen(5, true));
    unsigned long functions = 0;
    EXPECT_EQ(busIoctl(bus.number(), I2C_FUNCS, &functions), 0);
    EXPECT_EQ(functions, 0x0EFF0001);
}

TEST_F(BusServerTest, smbusAccessesAreServed) {
    const Descriptor bus(busOpen(5, true));
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE, reinterpret_cast<void*>(0x51)), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE_FORCE, reinterpret_cast<void*>(0x51)), 0);
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE, reinterpret_cast<void*>(0x50)), 0);
    i2c_smbus_data data{};
    i2c_smbus_ioctl_data access{
        .read_write = I2C_SMBUS_READ, .command = 1, .size = I2C_SMBUS_WORD_DATA, .data = &data};
    EXPECT_EQ(busIoctl(bus.number(), I2C_SMBUS, &access), 0);
    EXPECT_EQ(data.word, 0x0C0B);
    data.block[0] = 3;
    access.size = I2C_SMBUS_I2C_BLOCK_DATA;
    EXPECT_EQ(busIoctl(bus.number(), I2C_SMBUS, &access), 0);
    EXPECT_EQ(Bytes(data.block, data.block + 4), (Bytes{3, 11, 12, 13}));
    data.byte = 99;
    access = {
        .read_write = I2C_SMBUS_WRITE, .command = 2, .size = I2C_SMBUS_BYTE_DATA, .data = &data};
    EXPECT_EQ(busIoctl(bus.number(), I2C_SMBUS, &access), 0);
    access = {
        .read_write = I2C_SMBUS_WRITE, .command = 0, .size = I2C_SMBUS_PROC_CALL, .data = &data};
    data.word = 0x0201;
    EXPECT_EQ(busIoctl(bus.number(), I2C_SMBUS, &access), 0);
    EXPECT_EQ(data.word, 0x0D63); // the 99 written to byte 2, and the byte behind it
}

TEST_F(BusServerTest, theLogHoldsAControlTransactionBeforeItsReplyArrives) {
    const Descriptor bus(busOpen(5, true));
    ControlRequest create = createNode(3, 0, "PUCK", "");
    ControlRequest query = getProperty(0x33, 8);
    EXPECT_EQ(rdwr(bus.number(), create), 2);
    EXPECT_EQ(rdwr(bus.number(), query), -1);
    std::ostringstream log;
    log << std::ifstream(server_.log()).rdbuf();
    EXPECT_EQ(log.str(),
              "/dev/i2c-5 create-node index=3 target=0x00 property8=0x00000000 "
              "property10=0x00000000 device=0,0,0,0,0,0,0,0 type=\"PUCK\" path=\"\" -> 2 status=0 "
              "bus=7\n"
              "/dev/i2c-5 get-property target=0x33 property=8 -> -19 ENODEV\n");
}

TEST_F(BusServerTest, duplicatesAndThreadsShareOneOpenBus) {
    if (zolt::test::isEmulated()) {
        GTEST_SKIP() << "emulated: the emulator does not know the cookie of a socket";
    }
    const Descriptor bus(busOpen(5, true));
    const Descriptor copy(dup(bus.number()));
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            const int number = i % 2 == 0 ? bus.number() : copy.number();
            for (int round = 0; round < 200; ++round) {
                ControlRequest request = getProperty(0, 8);
                EXPECT_EQ(rdwr(number, request), 2);
                EXPECT_EQ(request.replyWord(0), 42);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(BusServerTest, concurrentClientsGetDifferentNodes) {
    constexpr std::uint32_t clients = 4;
    constexpr std::uint32_t nodes = 20;
    std::vector<std::thread> threads;
    threads.reserve(clients);
    std::vector<std::vector<std::uint32_t>> created(clients);
    for (std::uint32_t client = 0; client < clients; ++client) {
        threads.emplace_back([&, client] {
            const Descriptor bus(busOpen(5, true));
            for (std::uint32_t i = 0; i < nodes; ++i) {
                ControlRequest request = createNode(client * nodes + i, 0, "PUCK", "");
                EXPECT_EQ(rdwr(bus.number(), request), 2);
                created[client].push_back(request.replyWord(4));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::uint32_t> buses;
    for (const auto& each : created) {
        buses.insert(each.begin(), each.end());
    }
    EXPECT_EQ(buses.size(), clients * nodes); // every node is a bus of its own
    EXPECT_EQ(*buses.begin(), 7);
    EXPECT_EQ(*buses.rbegin(), 6 + clients * nodes);
}

// Waits for the server to close the connection. Returns whether it did.
bool isDropped(const Descriptor& client) {
    pollfd waiting{.fd = client.number(), .events = POLLIN, .revents = 0};
    std::uint8_t byte = 0;
    return poll(&waiting, 1, 10000) == 1 && recv(client.number(), &byte, 1, MSG_DONTWAIT) <= 0;
}

// Returns whether the server answers a request to open a bus.
bool isServed(const Descriptor& client) {
    const WireRequest open{.kind = WIRE_OPEN, .argument = 5, .ticket = 0};
    pollfd waiting{.fd = client.number(), .events = POLLIN, .revents = 0};
    std::uint8_t byte = 0;
    return send(client.number(), &open, sizeof open, MSG_NOSIGNAL) == sizeof open &&
           poll(&waiting, 1, 10000) == 1 && recv(client.number(), &byte, 1, MSG_DONTWAIT) == 1;
}

// Without descriptors or memory the waiting client stays in the queue. A server that asked again at
// once would do nothing else.
TEST_F(BusServerTest, aShortageMakesClientsWaitUntilAnotherHasGone) {
    for (const int error : {EMFILE, ENFILE, ENOMEM, ENOBUFS}) {
        SCOPED_TRACE(std::strerror(error));
        auto served = std::make_optional<Descriptor>(rawClient());
        EXPECT_TRUE(isServed(*served));
        failedAccepts = 0;
        acceptError = error;
        failingAccepts = std::numeric_limits<int>::max();
        const Descriptor waiting = rawClient();
        for (int i = 0; i < 20; ++i) {
            EXPECT_TRUE(isServed(*served));
        }
        EXPECT_EQ(failedAccepts, 1);
        failingAccepts = 0;
        served.reset();
        EXPECT_TRUE(isServed(waiting));
    }
}

TEST_F(BusServerTest, anotherFailureConcernsOneClientAlone) {
    for (const int error : {ECONNABORTED, EINTR, EPROTO}) {
        SCOPED_TRACE(std::strerror(error));
        failedAccepts = 0;
        acceptError = error;
        failingAccepts = 1;
        EXPECT_TRUE(isServed(rawClient()));
        EXPECT_EQ(failedAccepts, 1);
    }
}

TEST_F(BusServerTest, aClientThatSendsTooMuchIsDroppedAlone) {
    const Descriptor bus(busOpen(5, true));
    const Descriptor silent = rawClient();
    const Descriptor large = rawClient();
    const int room = 400000;
    setsockopt(large.number(), SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    const Bytes tooLong(WIRE_LONGEST + 1);
    EXPECT_EQ(send(large.number(), tooLong.data(), tooLong.size(), 0),
              static_cast<ssize_t>(tooLong.size()));
    EXPECT_TRUE(isDropped(large));

    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), 2);
}

TEST_F(BusServerTest, aClientThatTakesNoRepliesIsDroppedAlone) {
    const Descriptor bus(busOpen(5, true));
    const Descriptor deaf = rawClient();
    const WireRequest open{.kind = WIRE_OPEN, .argument = 5, .ticket = 0};
    EXPECT_EQ(send(deaf.number(), &open, sizeof open, 0), sizeof open);
    const WireRequest slave{.kind = WIRE_SLAVE, .argument = 0x50, .ticket = 0};
    // Send until the server closes the connection. Only the test's time limit ends a failure.
    while (send(deaf.number(), &slave, sizeof slave, MSG_NOSIGNAL) > 0) {
    }
    EXPECT_TRUE(errno == EPIPE || errno == ECONNRESET) << errno;
    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), 2);
}

TEST_F(BusServerTest, strayRequestsDoNotDisturbTheNextOne) {
    const Descriptor bus(busOpen(5, true));
    const WireRequest number{.kind = WIRE_NUMBER, .argument = 0, .ticket = 1};
    EXPECT_EQ(send(bus.number(), &number, sizeof number, 0), sizeof number); // its reply stays
    EXPECT_EQ(::write(bus.number(), "x\n", 2), 2);                           // no request
    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), 2);
    EXPECT_EQ(request.replyWord(0), 42);
}

TEST_F(BusServerTest, aNonBlockingDescriptorIsAnswered) {
    const Descriptor bus(busOpen(5, true));
    ASSERT_EQ(fcntl(bus.number(), F_SETFL, O_NONBLOCK), 0);
    for (int round = 0; round < 100; ++round) {
        ControlRequest request = getProperty(0, 8);
        EXPECT_EQ(rdwr(bus.number(), request), 2);
        EXPECT_EQ(request.replyWord(0), 42);
    }
}

TEST_F(BusServerTest, readingABusAsAFileDoesNotBlock) {
    const Descriptor bus(busOpen(5, true));
    char byte = 0;
    EXPECT_EQ(::read(bus.number(), &byte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
}

TEST_F(BusServerTest, readsAndWritesAreTransfers) {
    const Descriptor bus(busOpen(5, true));
    std::array<std::uint8_t, 3> bytes{1, 77, 78};
    EXPECT_EQ(busWrite(bus.number(), bytes.data(), bytes.size()), -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_EQ(busRead(bus.number(), bytes.data(), bytes.size()), -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_EQ(busIoctl(bus.number(), I2C_SLAVE, reinterpret_cast<void*>(0x50)), 0);
    EXPECT_EQ(busWrite(bus.number(), bytes.data(), bytes.size()), 3);
    EXPECT_EQ(busWrite(bus.number(), bytes.data(), 1), 1);
    EXPECT_EQ(busRead(bus.number(), bytes.data(), bytes.size()), 3);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{77, 78, 13}));
    Bytes many(10000, 0xEE);
    EXPECT_EQ(busRead(bus.number(), many.data(), many.size()), 8192);
    EXPECT_EQ(Bytes(many.begin() + 8192, many.end()), Bytes(10000 - 8192, 0xEE));
    EXPECT_EQ(busWrite(bus.number(), many.data(), many.size()), 8192);
}

TEST_F(BusServerTest, requestsFailOnceTheServerHasEnded) {
    const Descriptor bus(busOpen(5, true));
    server_.stop();
    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), -1);
    EXPECT_EQ(errno, EIO);
}

// Performs a call on a connection whose other end answers the request with @p result. Returns the
// call's result, or its errno below zero.
int answered(std::int32_t result, const std::function<long(int)>& call) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    const Descriptor client(ends[0]);
    const Descriptor server(ends[1]);
    std::thread answering([&] {
        std::array<char, 256> request{};
        EXPECT_GT(recv(server.number(), request.data(), request.size(), 0), 0);
        WireRequest head{};
        std::memcpy(&head, request.data(), sizeof head);
        Bytes reply(sizeof(WireReply) +
                    (head.kind == WIRE_READ && result >= 0 ? head.argument : 0));
        const WireReply replyHead{.result = result, .ticket = head.ticket};
        std::memcpy(reply.data(), &replyHead, sizeof replyHead);
        EXPECT_GT(send(server.number(), reply.data(), reply.size(), 0), 0);
    });
    const long got = call(client.number());
    const int error = errno;
    answering.join();
    return static_cast<int>(got < 0 ? -error : got);
}

// A caller trusts a result: it reads that many bytes, or names an errno.
TEST(BusClient, aResultThatTheRequestCannotHaveIsAnError) {
    const auto read = [](int bus) {
        std::array<char, 4> bytes{};
        return static_cast<long>(busRead(bus, bytes.data(), bytes.size()));
    };
    const auto write = [](int bus) { return static_cast<long>(busWrite(bus, "abcd", 4)); };
    const auto transfer = [](int bus) {
        std::uint8_t byte = 0;
        i2c_msg message{.addr = 0x50, .flags = 0, .len = 1, .buf = &byte};
        i2c_rdwr_ioctl_data given{.msgs = &message, .nmsgs = 1};
        return static_cast<long>(busIoctl(bus, I2C_RDWR, &given));
    };
    const auto setAddress = [](int bus) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the ioctl takes a number so.
        return static_cast<long>(busIoctl(bus, I2C_SLAVE, reinterpret_cast<void*>(0x50)));
    };
    const struct {
        std::int32_t result;
        std::function<long(int)> call;
        int expected;
    } rows[] = {
        {4, read, 4},
        {5, read, -EIO},
        {4, write, 4},
        {5, write, -EIO},
        {1, transfer, 1},
        {2, transfer, -EIO},
        {0, setAddress, 0},
        {1, setAddress, -EIO},
        {-4095, read, -4095},
        {-4096, read, -EIO},
        {-ENXIO, transfer, -ENXIO},
        {std::numeric_limits<std::int32_t>::min(), transfer, -EIO},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(answered(row.result, row.call), row.expected) << row.result;
    }
}

// Bus 7 answers recover-bus requests after 100 ms and get-property requests never. Bus 8 opens
// after 100 ms.
BusState slowBuses() {
    BusState state = twoBuses();
    EXPECT_EQ(busCoreAddBus(&state.core(), 7), 0);
    EXPECT_EQ(busCoreAddBus(&state.core(), 8), 0);
    for (const BusCoreFault& fault :
         {busDelay(7, CONTROL_RECOVER_BUS, 100),
          busDelay(7, CONTROL_GET_PROPERTY, BUS_CORE_FOREVER),
          // Longer than a slow machine needs to send many requests.
          busDelay(7, CONTROL_REMOVE_DEVICE, 60000), busDelay(8, BUS_CORE_OPEN, 100)}) {
        EXPECT_EQ(busCoreAddFault(&state.core(), &fault), 0);
    }
    return state;
}

class SlowBusServerTest : public BusServerTest {
protected:
    SlowBusServerTest() : BusServerTest(slowBuses()) {}

    // Opens the bus and sends a request whose reply the test does not await.
    [[nodiscard]] Descriptor withoutPatience(ControlRequest request, int times) const {
        Descriptor client = rawClient();
        const WireRequest open{.kind = WIRE_OPEN, .argument = 7, .ticket = 0};
        EXPECT_EQ(send(client.number(), &open, sizeof open, 0), sizeof open);
        const bool isReading = request.messages.size() == 2;
        WireRequest head{.kind = WIRE_TRANSFER, .argument = isReading ? 2U : 1U, .ticket = 1};
        std::vector<WireMessage> messages{{0, CONTROL_FLAG, CONTROL_RECORD_SIZE}};
        if (isReading) {
            messages.push_back({0, I2C_M_RD, request.messages[1].len});
        }
        Bytes bytes(sizeof head);
        std::memcpy(bytes.data(), &head, sizeof head);
        const auto* const rest = reinterpret_cast<const std::uint8_t*>(messages.data());
        bytes.insert(bytes.end(), rest, rest + messages.size() * sizeof(WireMessage));
        bytes.insert(bytes.end(), request.messages[0].buf,
                     request.messages[0].buf + CONTROL_RECORD_SIZE);
        for (int i = 0; i < times; ++i) {
            EXPECT_EQ(send(client.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                      static_cast<ssize_t>(bytes.size()));
        }
        return client;
    }

    [[nodiscard]] std::string logged() const {
        std::ostringstream log;
        log << std::ifstream(server_.log()).rdbuf();
        return log.str();
    }
};

// The milliseconds that a call takes.
template <typename Call>
long long durationOf(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    const auto duration = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

TEST_F(SlowBusServerTest, aDelayedRequestIsAnsweredAndLoggedWhenItEnds) {
    const Descriptor bus(busOpen(7, true));
    EXPECT_GE(durationOf([&] {
                  ControlRequest request = recoverBus(96);
                  EXPECT_EQ(rdwr(bus.number(), request), 1);
              }),
              100);
    EXPECT_EQ(logged(), "/dev/i2c-7 recover-bus mode=96 -> 1\n");
}

TEST_F(SlowBusServerTest, aDelayedOpeningSucceedsWhenItEnds) {
    EXPECT_GE(durationOf([&] { EXPECT_GE(Descriptor(busOpen(8, true)).number(), 0); }), 100);
    EXPECT_LT(durationOf([&] { EXPECT_TRUE(busIsThere(8)); }), 100); // a look is not delayed
}

TEST_F(SlowBusServerTest, otherThreadsUseOtherBusesAndTheSameBusMeanwhile) {
    const Descriptor slow(busOpen(7, true));
    std::atomic<bool> isOver = false;
    std::thread waiting([&] {
        ControlRequest request = getProperty(0, 8);
        EXPECT_EQ(rdwr(slow.number(), request), -1); // until the server ends
        EXPECT_EQ(errno, EIO);
        isOver = true;
    });
    // The other thread needs this time to send its request. If it blocked this thread, only the
    // test's time limit would end the test.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const Descriptor other(busOpen(5, true));
    const Descriptor same(busOpen(7, true));
    for (int round = 0; round < 50; ++round) {
        ControlRequest request = getProperty(0, 8);
        EXPECT_EQ(rdwr(other.number(), request), 2);
        EXPECT_EQ(request.replyWord(0), 42);
    }
    ControlRequest recovery = recoverBus(96);
    EXPECT_EQ(rdwr(same.number(), recovery), 1);
    EXPECT_FALSE(isOver);
    server_.stop();
    waiting.join();
}

TEST_F(SlowBusServerTest, aClientThatLeavesEndsItsDelayedRequests) {
    { const Descriptor gone = withoutPatience(recoverBus(96), 3); }
    const Descriptor bus(busOpen(7, true));
    ControlRequest request = recoverBus(97);
    EXPECT_EQ(rdwr(bus.number(), request), 1); // ends after the others would have
    EXPECT_EQ(logged(), "/dev/i2c-7 recover-bus mode=97 -> 1\n");
}

TEST_F(SlowBusServerTest, aClientWithTooManyDelayedRequestsIsDroppedAlone) {
    const Descriptor hasty = withoutPatience(removeDevice(0), 65);
    pollfd waiting{.fd = hasty.number(), .events = POLLRDHUP, .revents = 0};
    EXPECT_EQ(poll(&waiting, 1, 10000), 1);
    EXPECT_NE(waiting.revents & (POLLRDHUP | POLLHUP), 0);
    const Descriptor bus(busOpen(5, true));
    ControlRequest request = getProperty(0, 8);
    EXPECT_EQ(rdwr(bus.number(), request), 2);
}

TEST_F(SlowBusServerTest, theServerEndsWithRequestsThatWait) {
    const Descriptor hung = withoutPatience(getProperty(0, 8), 3);
    const Descriptor slow = withoutPatience(recoverBus(96), 3);
    server_.stop();
    EXPECT_EQ(logged(), "");
}

TEST(BusServerStart, anUnusableSocketIsReportedWithItsPath) {
    sd_event* loop = nullptr;
    ASSERT_GE(sd_event_new(&loop), 0);
    const std::string tooLong = "/" + std::string(200, 'x');
    for (const std::string& path : {std::string("/nonexistent/i2c"), tooLong}) {
        try {
            const BusServer server(loop, path, BusState());
            ADD_FAILURE() << path;
        } catch (const std::system_error& error) {
            EXPECT_NE(std::string(error.what()).find(path), std::string::npos);
        }
    }
    sd_event_unref(loop);
}

} // namespace
} // namespace standin

int __wrap_accept4(int listener, sockaddr* address, socklen_t* length, int flags) {
    if (standin::failingAccepts > 0) {
        --standin::failingAccepts;
        ++standin::failedAccepts;
        errno = standin::acceptError;
        return -1;
    }
    return __real_accept4(listener, address, length, flags);
}
// NOLINTEND(bugprone-reserved-identifier)
