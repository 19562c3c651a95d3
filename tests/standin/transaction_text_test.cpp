#include "standin/i2c_bus/server/transaction_text.h"

#include "tests/standin/control_request.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace standin {
namespace {

std::string textOf(const ControlRequest& request, int result) {
    return transactionText(5, request.messages, result);
}

TEST(TransactionText, anUpdateShowsItsFields) {
    ControlRequest request = updateProperty(0x1A, 7, 0xFFFFFFFF);
    request.setWord(8, 3);
    request.setText(24, "PUCK");
    EXPECT_EQ(textOf(request, 1), "/dev/i2c-5 update-property index=3 target=0x1A property=7 "
                                  "value=0xFFFFFFFF type=\"PUCK\" -> 1");
}

TEST(TransactionText, aQueryShowsItsAnswer) {
    ControlRequest request = getProperty(0, 8);
    request.reply = {0x11, 0x22, 0x33, 0x44};
    request.messages[1].buf = request.reply.data();
    EXPECT_EQ(textOf(request, 2),
              "/dev/i2c-5 get-property target=0x00 property=8 -> 2 value=0x44332211");
}

TEST(TransactionText, theDmaSafeFlagIsNotShown) {
    ControlRequest request = getProperty(0, 8);
    request.messages[0].flags = 0x0280;
    request.messages[1].flags = 0x0201;
    EXPECT_EQ(textOf(request, 2),
              "/dev/i2c-5 get-property target=0x00 property=8 -> 2 value=0x00000000");
}

TEST(TransactionText, theDmaSafeFlagOfAPlainTransferIsNotShown) {
    std::uint8_t byte = 5;
    i2c_msg message{.addr = 0x50, .flags = 0x0200, .len = 1, .buf = &byte};
    EXPECT_EQ(transactionText(5, {&message, 1}, 1),
              "/dev/i2c-5 transfer [0x0050 0x0000 1: 05] -> 1");
}

TEST(TransactionText, aRefusalShowsItsErrorAndNoAnswer) {
    EXPECT_EQ(textOf(getProperty(0xFFFFFFFF, 4294967295), -ENODEV),
              "/dev/i2c-5 get-property target=0xFFFFFFFF property=4294967295 -> -19 ENODEV");
    EXPECT_EQ(textOf(recoverBus(96), -4000), "/dev/i2c-5 recover-bus mode=96 -> -4000");
}

TEST(TransactionText, aCreationShowsItsFieldsAndItsAnswer) {
    ControlRequest request = createNode(3, 0x50, "PUCK", "/dev/i2c-5");
    request.setWord(30, 0x11223344);
    request.setWord(74, 0x55667788);
    for (std::uint32_t i = 0; i < 8; ++i) {
        request.setWord(38 + 4 * i, 1000 + i);
    }
    request.reply[4] = 20;
    EXPECT_EQ(textOf(request, 2),
              "/dev/i2c-5 create-node index=3 target=0x50 property8=0x55667788 "
              "property10=0x11223344 device=1000,1001,1002,1003,1004,1005,1006,1007 type=\"PUCK\" "
              "path=\"/dev/i2c-5\" -> 2 status=0 bus=20");
}

TEST(TransactionText, aRemovalAndARecoveryShowOneField) {
    EXPECT_EQ(textOf(removeDevice(0x50), 1), "/dev/i2c-5 remove-device target=0x50 -> 1");
    EXPECT_EQ(textOf(recoverBus(97), 1), "/dev/i2c-5 recover-bus mode=97 -> 1");
}

TEST(TransactionText, bytesOutsideTheFieldsAreShown) {
    ControlRequest request = removeDevice(0x50);
    request.record[12] = 0x01;
    request.record[163] = 0xAB;
    EXPECT_EQ(textOf(request, 1), "/dev/i2c-5 remove-device target=0x50 +12:01 +163:AB -> 1");
}

TEST(TransactionText, aTextShowsEveryByteOfItsField) {
    ControlRequest request = updateProperty(0, 0, 0);
    request.setText(24, "A\"B\\C\x01\xFF");
    request.record[24 + 8] = 'Z'; // behind the text's end
    EXPECT_EQ(textOf(request, 1),
              "/dev/i2c-5 update-property index=0 target=0x00 property=0 value=0x00000000 "
              "type=\"A\\x22B\\x5CC\\x01\\xFF\" +32:5A -> 1");
    ControlRequest whole = updateProperty(0, 0, 0);
    whole.setText(24, "SIXTEEN LETTERS!");
    EXPECT_EQ(textOf(whole, 1),
              "/dev/i2c-5 update-property index=0 target=0x00 property=0 value=0x00000000 "
              "type=\"SIXTEEN LETTERS!\" -> 1");
}

TEST(TransactionText, aMalformedRequestIsShownMessageByMessage) {
    ControlRequest request = getProperty(0, 8);
    request.messages[0].len = 10;
    EXPECT_EQ(textOf(request, -EMSGSIZE),
              "/dev/i2c-5 control [0x0000 0x0080 10: 54 45 53 4B 05 00 00 00 00 00] "
              "[0x0000 0x0001 4] -> -90 EMSGSIZE");
    request.messages.pop_back();
    request.messages[0] = {.addr = 0x50, .flags = 0x0280, .len = 0, .buf = nullptr};
    EXPECT_EQ(textOf(request, -EINVAL), "/dev/i2c-5 control [0x0050 0x0080 0] -> -22 EINVAL");
}

TEST(TransactionText, anUnknownCommandIsShownMessageByMessage) {
    const std::string rest = [] {
        std::string zeros;
        for (int i = 8; i < 164; ++i) {
            zeros += " 00";
        }
        return zeros;
    }();
    ControlRequest request = recoverBus(0);
    request.setWord(4, 9);
    EXPECT_EQ(textOf(request, -EOPNOTSUPP), "/dev/i2c-5 control [0x0000 0x0080 164: 54 45 53 4B 09 "
                                            "00 00 00" +
                                                rest + "] -> -95 EOPNOTSUPP");
    request.setWord(4, 8);
    request.record[0] = 't';
    EXPECT_EQ(textOf(request, -EINVAL), "/dev/i2c-5 control [0x0000 0x0080 164: 74 45 53 4B 08 "
                                        "00 00 00" +
                                            rest + "] -> -22 EINVAL");
}

TEST(TransactionText, aPlainTransferIsShownMessageByMessage) {
    std::uint8_t written[] = {0x05, 0xAB};
    std::uint8_t read[] = {0x45, 0x00, 0xFF};
    i2c_msg messages[] = {
        {.addr = 0x50, .flags = 0, .len = 2, .buf = written},
        {.addr = 0x50, .flags = I2C_M_RD, .len = 3, .buf = read},
        {.addr = 0x51, .flags = 0, .len = 0, .buf = nullptr},
    };
    EXPECT_EQ(transactionText(5, messages, 3),
              "/dev/i2c-5 transfer [0x0050 0x0000 2: 05 AB] [0x0050 0x0001 3: 45 00 FF] "
              "[0x0051 0x0000 0] -> 3");
    EXPECT_EQ(transactionText(5, messages, -ENXIO),
              "/dev/i2c-5 transfer [0x0050 0x0000 2: 05 AB] [0x0050 0x0001 3] "
              "[0x0051 0x0000 0] -> -6 ENXIO");
    messages[2].flags = CONTROL_FLAG; // in any message, it makes the whole request one of control
    EXPECT_EQ(transactionText(5, messages, -EINVAL),
              "/dev/i2c-5 control [0x0050 0x0000 2: 05 AB] [0x0050 0x0001 3] "
              "[0x0051 0x0080 0] -> -22 EINVAL");
}

} // namespace
} // namespace standin
