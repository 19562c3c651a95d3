#include "standin/i2c_bus/server/smbus.h"

#include "standin/i2c_bus/server/bus_state.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <linux/i2c-dev.h>
#include <numeric>

namespace standin {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Smbus : public testing::Test {
protected:
    Smbus() {
        Bytes content(256);
        std::iota(content.begin(), content.end(), std::uint8_t{0});
        EXPECT_EQ(busCoreAddBus(&state_.core(), 5), 0);
        EXPECT_EQ(state_.addMemory(5, 0x50, content, 1, false), 0);
    }

    int access(WireSmbus& given, std::uint16_t address = 0x50) {
        return smbusAccess(
            [this](std::span<i2c_msg> messages) {
                return busCoreTransfer(&state_.core(), 5, messages.data(),
                                       static_cast<std::uint32_t>(messages.size()));
            },
            address, 0, given);
    }
    [[nodiscard]] Bytes memory(std::uint32_t from, std::uint32_t count) {
        const std::uint8_t* const start = busCoreFindDevice(&state_.core(), 5, 0x50)->memory + from;
        return {start, start + count};
    }

    BusState state_;
};

WireSmbus reading(std::uint8_t command, std::uint16_t size) {
    return {.isRead = 1, .command = command, .size = size, .data = {}};
}

WireSmbus writing(std::uint8_t command, std::uint16_t size, const Bytes& data) {
    WireSmbus access{.isRead = 0, .command = command, .size = size, .data = {}};
    std::copy(data.begin(), data.end(), access.data);
    return access;
}

TEST_F(Smbus, aQuickAccessFindsADevice) {
    WireSmbus read = reading(0, I2C_SMBUS_QUICK);
    WireSmbus write = writing(0, I2C_SMBUS_QUICK, {});
    EXPECT_EQ(access(read), 0);
    EXPECT_EQ(access(write), 0);
    EXPECT_EQ(access(read, 0x51), -ENXIO);
    EXPECT_EQ(access(write, 0x51), -ENXIO);
}

TEST_F(Smbus, aByteIsReadFromThePointerThatAByteSets) {
    WireSmbus set = writing(0x42, I2C_SMBUS_BYTE, {});
    WireSmbus get = reading(0, I2C_SMBUS_BYTE);
    EXPECT_EQ(access(set), 0);
    EXPECT_EQ(access(get), 0);
    EXPECT_EQ(get.data[0], 0x42);
    EXPECT_EQ(access(get), 0);
    EXPECT_EQ(get.data[0], 0x43);
    EXPECT_EQ(memory(0x42, 1), Bytes{0x42});
}

TEST_F(Smbus, registersAreReadAndWritten) {
    WireSmbus byte = reading(0x10, I2C_SMBUS_BYTE_DATA);
    EXPECT_EQ(access(byte), 0);
    EXPECT_EQ(byte.data[0], 0x10);
    WireSmbus word = reading(0x20, I2C_SMBUS_WORD_DATA);
    EXPECT_EQ(access(word), 0);
    EXPECT_EQ(Bytes(word.data, word.data + 3), (Bytes{0x20, 0x21, 0}));
    byte = writing(0x30, I2C_SMBUS_BYTE_DATA, {0xAA, 0xBB});
    EXPECT_EQ(access(byte), 0);
    word = writing(0x40, I2C_SMBUS_WORD_DATA, {0xCC, 0xDD, 0xEE});
    EXPECT_EQ(access(word), 0);
    EXPECT_EQ(memory(0x30, 2), (Bytes{0xAA, 0x31}));
    EXPECT_EQ(memory(0x40, 3), (Bytes{0xCC, 0xDD, 0x42}));
}

TEST_F(Smbus, aProcessCallWritesAWordAndReadsOne) {
    WireSmbus call = writing(0x30, I2C_SMBUS_PROC_CALL, {0xAA, 0xBB});
    EXPECT_EQ(access(call), 0);
    EXPECT_EQ(memory(0x30, 2), (Bytes{0xAA, 0xBB}));
    EXPECT_EQ(Bytes(call.data, call.data + 2), (Bytes{0x32, 0x33})); // the word behind it
}

TEST_F(Smbus, blocksAreWrittenWithAndWithoutTheirLength) {
    WireSmbus block = writing(0x10, I2C_SMBUS_BLOCK_DATA, {2, 0xAA, 0xBB, 0xCC});
    EXPECT_EQ(access(block), 0);
    EXPECT_EQ(memory(0x10, 4), (Bytes{2, 0xAA, 0xBB, 0x13}));
    block = writing(0x20, I2C_SMBUS_I2C_BLOCK_DATA, {2, 0xAA, 0xBB, 0xCC});
    EXPECT_EQ(access(block), 0);
    EXPECT_EQ(memory(0x20, 3), (Bytes{0xAA, 0xBB, 0x22}));
}

TEST_F(Smbus, blocksAreReadAtTheLengthAskedFor) {
    WireSmbus block = reading(0x20, I2C_SMBUS_I2C_BLOCK_DATA);
    block.data[0] = 3;
    EXPECT_EQ(access(block), 0);
    EXPECT_EQ(Bytes(block.data, block.data + 5), (Bytes{3, 0x20, 0x21, 0x22, 0}));
    block = reading(0x40, I2C_SMBUS_I2C_BLOCK_BROKEN);
    EXPECT_EQ(access(block), 0);
    EXPECT_EQ(block.data[0], 32);
    EXPECT_EQ(block.data[32], 0x5F);
    EXPECT_EQ(block.data[33], 0);
}

TEST_F(Smbus, aBlockHas1To32Bytes) {
    for (const std::uint16_t size :
         std::initializer_list<std::uint16_t>{I2C_SMBUS_BLOCK_DATA, I2C_SMBUS_I2C_BLOCK_DATA}) {
        WireSmbus block = writing(0, size, {33});
        EXPECT_EQ(access(block), -EINVAL);
        block = writing(0, size, {0});
        EXPECT_EQ(access(block), -EINVAL);
        block = writing(0, size, {32});
        EXPECT_EQ(access(block), 0);
    }
    WireSmbus block = reading(0, I2C_SMBUS_I2C_BLOCK_DATA);
    block.data[0] = 255;
    EXPECT_EQ(access(block), -EINVAL);
    block.data[0] = 0;
    EXPECT_EQ(access(block), -EINVAL);
}

TEST_F(Smbus, kindsWithALengthFromTheDeviceAndUnknownKindsAreRefused) {
    WireSmbus block = reading(0, I2C_SMBUS_BLOCK_DATA);
    EXPECT_EQ(access(block), -EOPNOTSUPP);
    block = writing(0x10, I2C_SMBUS_BLOCK_PROC_CALL, {1, 0xAA});
    EXPECT_EQ(access(block), -EOPNOTSUPP);
    EXPECT_EQ(memory(0x10, 3), (Bytes{1, 0xAA, 0x12})); // the device got the block
    block = writing(0, I2C_SMBUS_BLOCK_PROC_CALL, {33});
    EXPECT_EQ(access(block), -EINVAL);
    block = writing(0, 99, {});
    EXPECT_EQ(access(block), -EOPNOTSUPP);
}

} // namespace
} // namespace standin
