#include "standin/i2c_bus/server/smbus.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <linux/i2c-dev.h>

namespace standin {

namespace {

constexpr std::uint32_t broken32ByteRead = I2C_SMBUS_BLOCK_MAX; // this kind of read gives no length

// The messages of an access: bytes to write after the command, and bytes to read.
struct Plan {
    bool sendsCommand = true;
    std::uint32_t firstByte = 0; // index in `data`; a block's length is data[0]
    std::uint32_t written = 0;
    std::uint32_t read = 0;
    std::uint16_t readFlags = 0;
    int error = 0;
};

Plan blockPlan(const WireSmbus& access, bool sendsLength) {
    const std::uint32_t length = access.data[0];
    if (length == 0 || length > I2C_SMBUS_BLOCK_MAX) {
        return {.error = -EINVAL};
    }
    return sendsLength ? Plan{.written = length + 1} : Plan{.firstByte = 1, .written = length};
}

// The bus driver refuses such a read, but not before the device has got the bytes to write.
Plan withLengthFromDevice(Plan plan) {
    plan.read = 1;
    plan.readFlags = I2C_M_RECV_LEN;
    return plan;
}

Plan planOf(const WireSmbus& access) {
    const bool isRead = access.isRead != 0;
    switch (access.size) {
    case I2C_SMBUS_BYTE:
        return isRead ? Plan{.sendsCommand = false, .read = 1} : Plan{};
    case I2C_SMBUS_BYTE_DATA:
        return isRead ? Plan{.read = 1} : Plan{.written = 1};
    case I2C_SMBUS_WORD_DATA:
        return isRead ? Plan{.read = 2} : Plan{.written = 2};
    case I2C_SMBUS_PROC_CALL:
        return {.written = 2, .read = 2};
    case I2C_SMBUS_BLOCK_DATA:
        return isRead ? withLengthFromDevice({}) : blockPlan(access, true);
    case I2C_SMBUS_BLOCK_PROC_CALL:
        return withLengthFromDevice(blockPlan(access, true));
    case I2C_SMBUS_I2C_BLOCK_BROKEN:
    case I2C_SMBUS_I2C_BLOCK_DATA: {
        const Plan plan = blockPlan(access, false);
        return isRead && plan.error == 0 ? Plan{.firstByte = 1, .read = plan.written} : plan;
    }
    default:
        return {.error = -EOPNOTSUPP};
    }
}

// A quick access only addresses the device; it transfers no bytes.
int quickAccess(const Transfer& transfer, std::uint16_t address, std::uint16_t flags, bool isRead) {
    i2c_msg message{.addr = address,
                    .flags = static_cast<std::uint16_t>(flags | (isRead ? I2C_M_RD : 0)),
                    .len = 0,
                    .buf = nullptr};
    return std::min(transfer({&message, 1}), 0);
}

} // namespace

int smbusAccess(const Transfer& transfer, std::uint16_t address, std::uint16_t flags,
                WireSmbus& access) {
    if (access.size == I2C_SMBUS_QUICK) {
        return quickAccess(transfer, address, flags, access.isRead != 0);
    }
    if (access.size == I2C_SMBUS_I2C_BLOCK_BROKEN && access.isRead != 0) {
        access.data[0] = broken32ByteRead;
    }
    const Plan plan = planOf(access);
    if (plan.error != 0) {
        return plan.error;
    }
    std::array<std::uint8_t, 1 + WIRE_SMBUS_DATA> output{access.command};
    std::copy_n(access.data + plan.firstByte, plan.written, output.begin() + 1);
    std::array<i2c_msg, 2> messages{};
    std::uint32_t count = 0;
    if (plan.sendsCommand) {
        messages[count++] = {.addr = address,
                             .flags = flags,
                             .len = static_cast<std::uint16_t>(1 + plan.written),
                             .buf = output.data()};
    }
    if (plan.read > 0) {
        messages[count++] = {.addr = address,
                             .flags = static_cast<std::uint16_t>(flags | I2C_M_RD | plan.readFlags),
                             .len = static_cast<std::uint16_t>(plan.read),
                             .buf = access.data + plan.firstByte};
    }
    return std::min(transfer(std::span(messages).first(count)), 0);
}

} // namespace standin
