// What one client may send, and what it gets.
#include "standin/i2c_bus/server/bus_connection.h"

#include "standin/i2c_bus/server/bus_state.h"

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

Bytes request(std::uint32_t kind, std::uint32_t argument) {
    Bytes bytes;
    append(bytes, WireRequest{kind, argument});
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
    append(bytes, WireReply{result});
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

class Connection : public testing::Test {
protected:
    Connection() {
        EXPECT_EQ(busCoreAddBus(&state_.core(), 5), 0);
        EXPECT_EQ(state_.addMemory(5, 0x50, {10, 11, 12, 13}, 1, false), 0);
        EXPECT_EQ(busCoreAddDeviceNode(&state_.core(), 5, 0x51, 0, ""), 0);
    }

    // The reply, or nothing when the client is to be dropped.
    std::optional<Bytes> answer(Bytes bytes) {
        bytes.shrink_to_fit();
        Bytes received{1, 2, 3};
        return connection_.answer(bytes, received) ? std::optional(received) : std::nullopt;
    }
    void open() { ASSERT_EQ(answer(request(WIRE_OPEN, 5)), reply(0)); }

    BusState state_;
    std::vector<std::string> lines_;
    TransactionLog log_ = [this](const std::string& line) { lines_.push_back(line); };
    BusConnection connection_{state_.core(), log_};
};

TEST_F(Connection, opensFirstAndOnce) {
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}}, {0})), std::nullopt);
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), std::nullopt);
    EXPECT_EQ(answer(request(WIRE_OPEN, 6)), reply(-ENOENT));
    EXPECT_EQ(answer(request(WIRE_OPEN, 5)), reply(0));
    EXPECT_EQ(answer(request(WIRE_OPEN, 5)), std::nullopt);
}

TEST_F(Connection, aLookOpensNothing) {
    const BusCoreFault busy{
        .bus = 8, .operation = BUS_CORE_OPEN, .anySelector = true, .selector = 0, .error = EBUSY};
    ASSERT_EQ(busCoreAddFault(&state_.core(), &busy), 0);
    EXPECT_EQ(answer(request(WIRE_LOOK, 5)), reply(0));
    EXPECT_EQ(answer(request(WIRE_LOOK, 6)), reply(-ENOENT));
    EXPECT_EQ(answer(request(WIRE_LOOK, 8)), reply(0));
    EXPECT_EQ(answer(request(WIRE_NUMBER, 0)), std::nullopt);
    open();
    EXPECT_EQ(answer(request(WIRE_LOOK, 5)), std::nullopt);
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

TEST_F(Connection, aFailureHoldsNothingElse) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, I2C_M_RD, 2}, {0x33, I2C_M_RD, 2}}, {})), reply(-ENXIO));
}

TEST_F(Connection, aTransferThatIsNotWhatItSaysEndsIt) {
    open();
    const Bytes fitting = transfer({{0x50, 0, 1}, {0x50, I2C_M_RD, 2}}, {1});
    for (std::size_t length = 0; length < fitting.size(); ++length) {
        EXPECT_EQ(answer({fitting.begin(), fitting.begin() + static_cast<ssize_t>(length)}),
                  std::nullopt)
            << length;
    }
    Bytes longer = fitting;
    longer.push_back(0);
    EXPECT_EQ(answer(longer), std::nullopt);
    EXPECT_EQ(answer(fitting), reply(2, {11, 12}));
}

TEST_F(Connection, aTransferHasBounds) {
    open();
    EXPECT_EQ(answer(transfer({}, {})), std::nullopt);
    const std::vector<WireMessage> most(42, {0x50, I2C_M_RD, 8192});
    const auto longest = answer(transfer(most, {}));
    ASSERT_TRUE(longest.has_value());
    EXPECT_EQ(longest->size(), 4 + 42 * 8192);
    EXPECT_EQ(answer(transfer(std::vector<WireMessage>(43, {0x50, I2C_M_RD, 1}), {})),
              std::nullopt);
    EXPECT_EQ(answer(transfer({{0x50, I2C_M_RD, 8193}}, {})), std::nullopt);
    EXPECT_EQ(answer(transfer({{0x50, 0, 8193}}, Bytes(8193))), std::nullopt);
    EXPECT_EQ(answer(request(WIRE_TRANSFER, 0xFFFFFFFF)), std::nullopt);
}

TEST_F(Connection, unknownRequestsEndIt) {
    open();
    for (const std::uint32_t kind : {0U, 8U, 0xFFFFFFFFU}) {
        EXPECT_EQ(answer(request(kind, 0)), std::nullopt);
    }
    Bytes longer = request(WIRE_SLAVE, 0x50);
    longer.push_back(0);
    EXPECT_EQ(answer(longer), std::nullopt);
    EXPECT_EQ(answer(request(WIRE_SMBUS, 0)), std::nullopt);
}

TEST_F(Connection, anAddressMayBeTakenByANode) {
    open();
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x50)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x51)), reply(-EBUSY));
    EXPECT_EQ(answer(request(WIRE_SLAVE_FORCE, 0x51)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x52)), reply(0));
    EXPECT_EQ(answer(request(WIRE_SLAVE, 0x80)), reply(-EINVAL));
    EXPECT_EQ(answer(request(WIRE_SLAVE_FORCE, 0x80)), reply(-EINVAL));
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
    EXPECT_EQ(answer(access), std::nullopt);
}

TEST_F(Connection, controlTransactionsAndNoOthersAreLogged) {
    open();
    EXPECT_EQ(answer(transfer({{0x50, 0, 1}}, {0})), reply(1));
    EXPECT_EQ(answer(transfer({{0, 0x0080, 2}}, {0xAA, 0xBB})), reply(-EMSGSIZE));
    EXPECT_EQ(lines_, (std::vector<std::string>{
                          "/dev/i2c-5 control [0x0000 0x0080 2: AA BB] -> -90 EMSGSIZE"}));
}

TEST_F(Connection, nothingThatItIsSentHarmsIt) {
    std::mt19937 random(1);
    const auto below = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    for (int round = 0; round < 20000; ++round) {
        BusConnection fresh(state_.core(), log_);
        Bytes received;
        Bytes first = request(WIRE_OPEN, 5);
        ASSERT_TRUE(fresh.answer(first, received));
        Bytes bytes = request(below(9), below(50));
        for (std::uint32_t rest = below(300); rest > 0; --rest) {
            bytes.push_back(below(3) == 0 ? static_cast<std::uint8_t>(random()) : 0);
        }
        bytes.resize(bytes.size() - below(static_cast<std::uint32_t>(bytes.size())));
        bytes.shrink_to_fit();
        if (fresh.answer(bytes, received)) {
            EXPECT_GE(received.size(), sizeof(WireReply));
        }
    }
}

} // namespace
} // namespace standin
