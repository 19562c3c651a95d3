#include "i2c/bus_device.h"

#include "tests/support/bus_devices.h"
#include "tests/support/console.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <limits>
#include <span>

namespace zolt::test {

namespace {

class BusDeviceTest : public testing::Test {
protected:
    BusDeviceTest() { resetBusDevices(); }
    void TearDown() override { EXPECT_EQ(openBusDevices(), 0); }
};

TEST_F(BusDeviceTest, APathIsWholeAndAsAFieldCutToFifteenCharacters) {
    struct Case {
        std::int32_t bus;
        const char* whole;
        const char* field;
    };
    const Case cases[] = {
        {0, "/dev/i2c-0", "/dev/i2c-0"},
        {123, "/dev/i2c-123", "/dev/i2c-123"},
        {-1, "/dev/i2c--1", "/dev/i2c--1"},
        {999999, "/dev/i2c-999999", "/dev/i2c-999999"},
        {1234567, "/dev/i2c-1234567", "/dev/i2c-123456"},
        {std::numeric_limits<std::int32_t>::max(), "/dev/i2c-2147483647", "/dev/i2c-214748"},
        {std::numeric_limits<std::int32_t>::min(), "/dev/i2c--2147483648", "/dev/i2c--21474"},
    };
    for (const auto& [bus, whole, field] : cases) {
        EXPECT_STREQ(BusPath(bus).c_str(), whole);
        EXPECT_STREQ(BusPath::asField(bus).c_str(), field);
    }
}

// The test's devices look at the padding of every ioctl. Here it would not be zero by chance.
TEST_F(BusDeviceTest, ThePaddingOfARequestIsZeroWhateverTheStackHeld) {
    busDevices().answers = {{.reply = bytesOf("01 02 03 04")}};
    const BusControlRecord record(BusCommand::getProperty);
    const BusDevice device("/dev/i2c-3");
    std::array<std::uint8_t, 4> reply;
    const std::span<std::uint8_t> room(reply);
    const int descriptor = device.descriptor();
    const auto spoilStack = [] {
        std::array<volatile std::uint8_t, 4096> bytes;
        std::ranges::fill(bytes, std::uint8_t{0xA5});
    };
    spoilStack();
    const int result = sendControl(descriptor, record, room); // the next call after spoilStack()
    EXPECT_EQ(result, 2);
}

TEST_F(BusDeviceTest, ADeviceIsClosedWithItsObject) {
    {
        const BusDevice device("/dev/i2c-3");
        EXPECT_TRUE(device.isOpen());
        EXPECT_EQ(openBusDevices(), 1);
    }
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c-3 O_RDWR", "close"}));
}

TEST_F(BusDeviceTest, ADeviceThatIsClosedEarlyIsClosedOnce) {
    {
        BusDevice device("/dev/i2c-3");
        device.close();
        EXPECT_FALSE(device.isOpen());
        EXPECT_EQ(openBusDevices(), 0);
    }
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c-3 O_RDWR", "close"}));
}

TEST_F(BusDeviceTest, AFailedOpenIsPrintedAndNothingIsClosed) {
    busDevices().openErrors = {
        {"/dev/i2c-3", ENOENT}, {"/dev/i2c-4", EACCES}, {"/dev/i2c-5", EBUSY}};
    EXPECT_EQ(outputOf([] {
                  EXPECT_FALSE(BusDevice("/dev/i2c-3").isOpen());
                  EXPECT_FALSE(BusDevice("/dev/i2c-4").isOpen());
                  EXPECT_FALSE(BusDevice("/dev/i2c-5").isOpen());
              }),
              "I2C Open error (No such file or directory)\n"
              "I2C Open error (Permission denied)\n"
              "I2C Open error (Device or resource busy)\n");
    EXPECT_EQ(busDevices().calls,
              (std::vector<std::string>{"open /dev/i2c-3 O_RDWR", "open /dev/i2c-4 O_RDWR",
                                        "open /dev/i2c-5 O_RDWR"}));
}

TEST_F(BusDeviceTest, ARequestIsOneControlMessage) {
    busDevices().answers = {{.result = 1}};
    const BusControlRecord record(BusCommand::recoverBus);
    const BusDevice device("/dev/i2c-3");
    EXPECT_EQ(sendControl(device.descriptor(), record), 1);
    EXPECT_EQ(busDevices().calls.back(), "ioctl 0x0707: [0x0000 0x0080 164]");
    EXPECT_EQ(busDevices().records.back(), controlRecord({{0, "54 45 53 4B"}, {4, "08 00 00 00"}}));
}

TEST_F(BusDeviceTest, AReplyIsASecondMessageWithAZeroedBuffer) {
    busDevices().answers = {{.reply = bytesOf("01 02 03 04")}};
    const BusControlRecord record(BusCommand::getProperty);
    const BusDevice device("/dev/i2c-3");
    std::array<std::uint8_t, 4> reply{9, 9, 9, 9};
    EXPECT_EQ(sendControl(device.descriptor(), record, reply), 2);
    EXPECT_EQ(busDevices().calls.back(), "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 4]");
    EXPECT_EQ(busDevices().replyAreas.back(), bytesOf("00 00 00 00"));
    EXPECT_EQ(reply, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
}

TEST_F(BusDeviceTest, ARefusedRequestKeepsItsErrnoAndAZeroReply) {
    busDevices().answers = {{.error = EREMOTEIO}};
    const BusControlRecord record(BusCommand::getProperty);
    const BusDevice device("/dev/i2c-3");
    std::array<std::uint8_t, 4> reply{9, 9, 9, 9};
    EXPECT_EQ(outputOf([&] { printRefusal(sendControl(device.descriptor(), record, reply)); }),
              "Status is -1 (Remote I/O error)\n");
    EXPECT_EQ(reply, (std::array<std::uint8_t, 4>{}));
}

} // namespace

} // namespace zolt::test
