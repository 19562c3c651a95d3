// Tests the bus server's side of one client: the client's requests and the replies.
#include "standin/i2c_bus/server/bus_connection.h"

#include "standin/i2c_bus/server/bus_state.h"
#include "tests/standin/bus_fault.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/i2c-dev.h>
#include <random>

namespace standin {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename T>
void append(Bytes& bytes, const T& value) {
    bytes.resize(bytes.size() + sizeof value);
    std::memcpy(bytes.data() + bytes.size() - sizeof value, &value, sizeof value);
}

constexpr std::uint32_t ticket = 0xFEDCBA98;

Bytes request(std::uint32_t kind, std::uint32_t argument) {
    Bytes bytes;
    append(bytes, WireRequest{.kind = kind, .argument = argument, .ticket = ticket});
    return bytes;
}

Bytes transfer(const std::vector<WireMessage>& messages, const Bytes& written) {
    Bytes bytes = request(WIRE_TRANSFER, static_cast<std::uint32_t>(messages.size()));
    for (const WireMessage& message : messages) {
        append(bytes, message);
    }
    bytes.insert(bytes.end(), written.begin(), written.end());
    return bytes;
}

Bytes reply(std::int32_t result, const Bytes& rest = {}) {
    Bytes bytes;
    append(bytes, WireReply{.result = result, .ticket = ticket});
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

const Bytes protocolError = reply(-EPROTO); // reply to an invalid request

class Connection : public testing::Test {
protected:
    Connection() {
        EXPECT_EQ(busCoreAddBus(&state_.core(), 5), 0);
        EXPECT_EQ(state_.addMemory(5, 0x50, {10, 11, 12, 13}, 1, false), 0);
        EXPECT_EQ(busCoreAddDeviceNode(&state_.core(), 5, 0x51, 0, ""), 0);
    }

    Bytes answer(Bytes bytes) {
        bytes.shrink_to_fit();
        Bytes received{1, 2, 3};
        connection_.answer(bytes, received);
        return received;
    }
    static Bytes smbus(std::uint16_t size) {
        Bytes access = request(WIRE_SMBUS, 0);
        append(access, WireSmbus{.isRead = 1, .command = 0, .size = size, .data = {}});
        return access;
    }
    void open() { ASSERT_EQ(answer(request(WIRE_OPEN, 5)), reply(0)); }

    BusState state_;
    std::vector<std::string> lines_;
    LineLog log_ = [this](const std::string& line) { lines_.push_back(line); };
    BusConnection connection_{state_.core(), log_};
};

TEST_F(Connection, anOpenRequestComesFirstAndOnce) {
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}}, {0})), protocolError);
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), protocolError);
    EXPECT_EQ(answer(request(WIRE_OPEN, 6)), reply(-ENOENT));
    EXPECT_EQ(answer(request(WIRE_OPEN, 5)), reply(0));
    EXPECT_EQ(answer(request(WIRE_OPEN, 5)), protocolError);
}

TEST_F(Connection, aLookRequestOpensNoBus) {
    const BusCoreFault busy = busFault(8, BUS_CORE_OPEN, EBUSY);
    ASSERT_EQ(busCoreAddFault(&state_.core(), &busy), 0);
    EXPECT_EQ(answer(request(WIRE_LOOK, 5)), reply(0));
    EXPECT_EQ(answer(request(WIRE_LOOK, 6)), reply(-ENOENT));
    EXPECT_EQ(answer(request(WIRE_LOOK, 8)), reply(0));
    EXPECT_EQ(answer(request(WIRE_NUMBER, 0)), protocolError);
    open();
    EXPECT_EQ(answer(request(WIRE_LOOK, 5)), protocolError);
}

TEST_F(Connection, anOpenBusKnowsItsNumber) {
    open();
    EXPECT_EQ(answer(request(WIRE_NUMBER, 0)), reply(5));
}

TEST_F(Connection, aTransferReadsAndWrites) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}}, {1})), reply(2, {11, 12}));
    EXPECT_EQ(answer(transfer({{0x50, 0, 3}, {0x50, 0, 1}, {0x50, I2C_M_RD, 1}}, {0, 7, 8, 1})),
              reply(3, {8}));
    EXPECT_EQ(answer(transfer({{0x50, 0, 0}}, {})), reply(1));
}

TEST_F(Connection, theLastReadMessageComesFirst) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}, {0x50, I2C_M_RD, 1}}, {1})),
              reply(3, {13, 11, 12}));
}

TEST_F(Connection, aFailureHasNoData) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, I2C_M_RD, 2}, {0x33, I2C_M_RD, 2}}, {})), reply(-ENXIO));
}

TEST_F(Connection, aTransferOfAWrongLengthIsRefused) {
    open();
    const Bytes fitting = transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}}, {1});
    for (std::size_t length = 0; length < fitting.size(); ++length) {
        Bytes expected;
        append(expected, WireReply{.result = -EPROTO, .ticket = length < 12 ? 0 : ticket});
        EXPECT_EQ(answer({fitting.begin(), fitting.begin() + static_cast<ssize_t>(length)}),
                  expected)
            << length;
    }
    Bytes longer = fitting;
    longer.push_back(0);
    EXPECT_EQ(answer(longer), protocolError);
    EXPECT_EQ(answer(fitting), reply(2, {11, 12}));
}

TEST_F(Connection, aTransferIsLimited) {
    open();
    EXPECT_EQ(answer(transfer({}, {})), protocolError);
    const std::vector<WireMessage> most(42, {0x50, I2C_M_RD, 8192});
    const auto longest = answer(transfer(most, {}));
    EXPECT_EQ(longest.size(), 8 + 42 * 8192);
    EXPECT_EQ(answer(transfer(std::vector<WireMessage>(43, {0x50, I2C_M_RD, 1}), {})),
              protocolError);
    EXPECT_EQ(answer(transfer({{0x50, I2C_M_RD, 8193}}, {})), protocolError);
    EXPECT_EQ(answer(transfer({{0x50, 0, 8193}}, Bytes(8193))), protocolError);
    EXPECT_EQ(answer(request(WIRE_TRANSFER, 0xFFFFFFFF)), protocolError);
}

TEST_F(Connection, unknownRequestsAreRefused) {
    open();
    for (const std::uint32_t kind : {0U, 12U, 0xFFFFFFFFU}) {
        EXPECT_EQ(answer(request(kind, 0)), protocolError);
    }
    Bytes longer = request(WIRE_SLAVE, 0x50);
    longer.push_back(0);
    EXPECT_EQ(answer(longer), protocolError);
    EXPECT_EQ(answer(request(WIRE_SMBUS, 0)), protocolError);
}

TEST_F(Connection, anAddressWithANodeIsBusyUnlessForced) {
    open();
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x51)), reply(-EBUSY));
    EXPECT_EQ(answer(request(WIRE_SLAVE_FORCE, 0x51)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x52)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x80)), reply(-EINVAL));
    EXPECT_EQ(answer(request(WIRE_SLAVE_FORCE, 0x80)), reply(-EINVAL));
}

TEST_F(Connection, addressesOfTenBitsAreTakenAndServeNothing) {
    open();
    EXPECT_EQ(answer(request(WIRE_TEN_BITS, 1)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x3FF)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE_FORCE, 0x400)), reply(-EINVAL));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    EXPECT_EQ(answer(request(WIRE_READ, 1)), reply(-EOPNOTSUPP));
    Bytes write = request(WIRE_WRITE, 0);
    write.push_back(2);
    EXPECT_EQ(answer(write), reply(-EOPNOTSUPP));
    EXPECT_EQ(answer(smbus(I2C_SMBUS_BYTE)), reply(-EOPNOTSUPP));
    EXPECT_EQ(answer(request(WIRE_TEN_BITS, 0)), reply(0));
    EXPECT_EQ(answer(request(WIRE_READ, 1)), reply(1, {10}));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x80)), reply(-EINVAL));
}

TEST_F(Connection, anAccessWithAChecksumFailsAndAReadSucceeds) {
    open();
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    EXPECT_EQ(answer(request(WIRE_CHECKSUMS, 1)), reply(0));
    for (const std::uint16_t size :
         std::initializer_list<std::uint16_t>{I2C_SMBUS_QUICK, I2C_SMBUS_BYTE}) {
        EXPECT_EQ(answer(smbus(size)), reply(-EOPNOTSUPP));
    }
    EXPECT_EQ(answer(request(WIRE_READ, 1)), reply(1, {10}));
    EXPECT_EQ(answer(request(WIRE_CHECKSUMS, 0)), reply(0));
    EXPECT_EQ(answer(smbus(I2C_SMBUS_QUICK)), reply(0, Bytes(34)));
}

TEST_F(Connection, readsAndWritesGoToTheAddress) {
    open();
    EXPECT_EQ(answer(request(WIRE_READ, 1)), reply(-ENXIO));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    Bytes write = request(WIRE_WRITE, 0);
    EXPECT_EQ(answer(write), reply(0));
    write.insert(write.end(), {2, 77});
    EXPECT_EQ(answer(write), reply(2));
    EXPECT_EQ(answer(request(WIRE_READ, 3)), reply(3, {13, 10, 11}));
    EXPECT_EQ(answer(request(WIRE_READ, 8192)).size(), 8 + 8192);
    EXPECT_EQ(answer(request(WIRE_READ, 8193)), protocolError);
    write.resize(12 + 8192);
    EXPECT_EQ(answer(write), reply(8192));
    write.resize(12 + 8193);
    EXPECT_EQ(answer(write), protocolError);
    Bytes longer = request(WIRE_READ, 1);
    longer.push_back(0);
    EXPECT_EQ(answer(longer), protocolError);
}

TEST_F(Connection, smbusAccessesGoToTheAddress) {
    open();
    Bytes access = request(WIRE_SMBUS, 0);
    append(access, WireSmbus{.isRead = 1, .command = 2, .size = I2C_SMBUS_BYTE_DATA, .data = {}});
    EXPECT_EQ(answer(access), reply(-ENXIO));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    Bytes data(34);
    data[0] = 12;
    EXPECT_EQ(answer(access), reply(0, data));
    access.push_back(0);
    EXPECT_EQ(answer(access), protocolError);
}

TEST_F(Connection, everyTransactionIsLogged) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}}, {1})), reply(2, {11, 12}));
    EXPECT_EQ(answer(transfer({{0, 0x0080, 2}}, {0xAA, 0xBB})), reply(-EMSGSIZE));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    EXPECT_EQ(answer(request(WIRE_READ, 1)), reply(1, {13}));
    Bytes write = request(WIRE_WRITE, 0);
    write.insert(write.end(), {2, 77});
    EXPECT_EQ(answer(write), reply(2));
    Bytes access = request(WIRE_SMBUS, 0);
    append(access, WireSmbus{.isRead = 1, .command = 2, .size = I2C_SMBUS_BYTE_DATA, .data = {}});
    Bytes data(34);
    data[0] = 77;
    EXPECT_EQ(answer(access), reply(0, data));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x33)), reply(0));
    Bytes quick = request(WIRE_SMBUS, 0);
    append(quick, WireSmbus{.isRead = 0, .command = 0, .size = I2C_SMBUS_QUICK, .data = {}});
    EXPECT_EQ(answer(quick), reply(-ENXIO));
    EXPECT_EQ(lines_, (std::vector<std::string>{
                          "/dev/i2c-5 transfer [0x0050 0x0000 1: 01] [0x0050 0x0001 2: 0B 0C] -> 2",
                          "/dev/i2c-5 control [0x0000 0x0080 2: AA BB] -> -90 EMSGSIZE",
                          "/dev/i2c-5 transfer [0x0050 0x0001 1: 0D] -> 1",
                          "/dev/i2c-5 transfer [0x0050 0x0000 2: 02 4D] -> 1",
                          "/dev/i2c-5 transfer [0x0050 0x0000 1: 02] [0x0050 0x0001 1: 4D] -> 2",
                          "/dev/i2c-5 transfer [0x0033 0x0000 0] -> -6 ENXIO",
                      }));
}

TEST_F(Connection, aDelayedTransferLeavesItsLogLineToTheCaller) {
    open();
    const BusCoreFault slow = busDelay(5, BUS_CORE_PLAIN, 20);
    ASSERT_EQ(busCoreAddFault(&state_.core(), &slow), 0);
    Bytes bytes = transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}}, {1});
    Bytes received;
    const Wait wait = connection_.answer(bytes, received);
    EXPECT_EQ(received, reply(2, {11, 12}));
    EXPECT_EQ(wait.milliseconds, 20U);
    EXPECT_EQ(wait.line, "/dev/i2c-5 transfer [0x0050 0x0000 1: 01] [0x0050 0x0001 2: 0B 0C] -> 2");
    EXPECT_TRUE(lines_.empty());
    Bytes number = request(WIRE_NUMBER, 0);
    EXPECT_EQ(connection_.answer(number, received).milliseconds, 0U); // the next request is quick
}

TEST_F(Connection, aDelayedOpeningOpensTheBus) {
    const BusCoreFault slow = busDelay(5, BUS_CORE_OPEN, 20);
    ASSERT_EQ(busCoreAddFault(&state_.core(), &slow), 0);
    EXPECT_EQ(answer(request(WIRE_LOOK, 5)), reply(0));
    Bytes bytes = request(WIRE_OPEN, 5);
    Bytes received;
    const Wait wait = connection_.answer(bytes, received);
    EXPECT_EQ(wait.milliseconds, 20U);
    EXPECT_EQ(wait.line, "");
    EXPECT_EQ(received, reply(0));
}

TEST_F(Connection, randomRequestsDoNoHarm) {
    std::mt19937 random(1);
    const auto below = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    for (int round = 0; round < 20000; ++round) {
        BusConnection fresh(state_.core(), log_);
        Bytes received;
        Bytes first = request(WIRE_OPEN, 5);
        fresh.answer(first, received);
        ASSERT_EQ(received, reply(0));
        Bytes bytes = request(below(13), below(50));
        for (std::uint32_t rest = below(300); rest > 0; --rest) {
            bytes.push_back(below(3) == 0 ? static_cast<std::uint8_t>(random()) : 0);
        }
        bytes.resize(bytes.size() - below(static_cast<std::uint32_t>(bytes.size())));
        bytes.shrink_to_fit();
        fresh.answer(bytes, received);
        EXPECT_GE(received.size(), sizeof(WireReply));
    }
}

} // namespace
} // namespace standin
