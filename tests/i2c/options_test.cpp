// The I2C options, run by the front end.
#include "app/command_line.h"
#include "app/dispatcher.h"
#include "app/one_shot.h"
#include "platform/sysinfo.h"
#include "tests/i2c/device_type_menu.h"
#include "tests/support/argument_vector.h"
#include "tests/support/bus_devices.h"
#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <utility>

namespace zolt::test {

namespace {

class I2cOptions : public testing::Test {
protected:
    I2cOptions() {
        resetBusDevices();
        resetPlatform();
    }
    void TearDown() override {
        EXPECT_EQ(openBusDevices(), 0);
        EXPECT_TRUE(busDevices().answers.empty());
    }

    static std::string oneShot(std::vector<std::string> words, std::string_view input = "") {
        words.insert(words.begin(), "zolt_test");
        return outputOf([&] { runOneShot(withArguments(std::move(words), parseCommandLine)); },
                        input);
    }
    static std::string interactive(std::uint8_t option, std::string_view input = "") {
        return outputOf([=] { runOption({.option = option}); }, input);
    }

    static void answerCreation(const std::string& reply) {
        busDevices().answers.push_back({.reply = Bytes(4)});
        busDevices().answers.push_back({.reply = Bytes(4)});
        busDevices().answers.push_back({.reply = bytesOf(reply)});
    }
};

const std::string failed = "Unable to perform the desired operation\n";

TEST_F(I2cOptions, OneShotCreatesBothNodesFromItsArguments) {
    answerCreation("00 00 00 00 14 00 00 00");
    answerCreation("00 00 00 00 14 00 00 00");
    EXPECT_EQ(oneShot({"-o", "9", "-d", "280", "-i", "259", "-n", "5", "-t", "80"}),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "Device Node Status: [0] &  Name: [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c-5 O_RDWR");
    EXPECT_EQ(busDevices().records[2], controlRecord({{0, "54 45 53 4B 06 00 00 00"},
                                                      {18, "03 00 00 00"},    // 259's low byte
                                                      {78, "50 55 43 4B"}})); // 280's: 24, PUCK
    EXPECT_EQ(busDevices().records[5], controlRecord({{0, "54 45 53 4B 06 00 00 00"},
                                                      {18, "03 00 00 00"},
                                                      {38, "10 00 00 00"},
                                                      {50, "64 00 00 00"},
                                                      {54, "00 01 00 00"},
                                                      {58, "28 00 00 00"},
                                                      {70, "50 00 00 00"}, // decimal 80
                                                      {78, "50 55 43 4B"},
                                                      {94, "2F 64 65 76 2F 69 32 63 2D 32 30"}}));
}

TEST_F(I2cOptions, OneShotWithoutATargetStillCreatesTheIndexNode) {
    answerCreation("00 00 00 00 14 00 00 00");
    EXPECT_EQ(oneShot({"-o", "9", "-d", "24", "-i", "3", "-n", "5"}),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "Index Node Creation Failed.\n");
}

TEST_F(I2cOptions, OneShotWithoutAParentOpensBusMinusOne) {
    busDevices().openErrors = {{"/dev/i2c--1", ENOENT}};
    EXPECT_EQ(oneShot({"-o", "9"}), "I2C Open error (No such file or directory)\n"
                                    "Index Node Creation Failed.\n");
}

TEST_F(I2cOptions, OneShotReportsAFailedDeviceNode) {
    answerCreation("00 00 00 00 14 00 00 00");
    busDevices().openErrors = {{"/dev/i2c-20", EBUSY}};
    EXPECT_EQ(oneShot({"-o", "9", "-n", "5", "-t", "80"}),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "I2C Open error (Device or resource busy)\n"
              "Device Node Creation Failed.\n");
}

TEST_F(I2cOptions, EmptyListingsAreNoFailures) {
    EXPECT_EQ(oneShot({"-o", "6", "-p", "9"}), "Receved NULL data.\nPICPWR 9 not found in sysfs\n");
    EXPECT_EQ(oneShot({"-o", "7"}), "Input device type not found in sysfs\n");
    EXPECT_EQ(oneShot({"-o", "8", "-d", "165"}), "");
    EXPECT_EQ(platform().calls[0], "i2c_parse_sysinfo 16");
    EXPECT_EQ(platform().calls[2], "i2c_parse_sysinfo 0");
    EXPECT_EQ(platform().calls[4], "i2c_parse_sysinfo 0");
    EXPECT_EQ(platform().calls.size(), 4 + 2 * 165);
}

TEST_F(I2cOptions, AListingAsksForItsMissingArgument) {
    EXPECT_EQ(interactive(6, "0\n"),
              "Enter the PICPWR ID: (Enter 0 for all PICPWRs)Receved NULL data.\n");
    EXPECT_EQ(interactive(7, "59\n"),
              deviceTypeMenu + std::string("Input device type not found in sysfs\n"));
    EXPECT_EQ(interactive(8, "-1\n"), deviceTypeMenu);
    EXPECT_EQ(interactive(8, "x\n"), deviceTypeMenu + std::string("\nscanf error") + failed);
    EXPECT_EQ(oneShot({"-o", "7", "-d", "200"}, "3"),
              deviceTypeMenu + std::string("Input device type not found in sysfs\n"));
}

TEST_F(I2cOptions, NodeOperationsThatFailAreReported) {
    EXPECT_EQ(interactive(9, "x"),
              deviceTypeMenu + std::string("\nInvalid Device Type\n") + failed);
    EXPECT_EQ(interactive(10, "x"), "Enter Parent Node Num:\nInvalid Index Node\n" + failed);
    EXPECT_EQ(interactive(13, "1 x"),
              "Enter Parent Node Num:Enter Property Type:\nInvalid Property Type\n" + failed);
    EXPECT_EQ(interactive(14, "1 x"), deviceTypeMenu +
                                          std::string("Enter Parent Node Num:"
                                                      "\nInvalid Parent Node\n") +
                                          failed);
    EXPECT_EQ(interactive(15, "x"), "Enter Node Num:\nInvalid Device Type\n" + failed);
}

TEST_F(I2cOptions, ARefusedCreationOrRemovalIsNoFailure) {
    busDevices().openErrors = {{"/dev/i2c-5", EACCES}};
    EXPECT_EQ(interactive(9, "1 2 5 50"),
              deviceTypeMenu + std::string("Enter Index:Enter Parent Node Num:"
                                           "Enter Target Address:"
                                           "I2C Open error (Permission denied)\n"
                                           "Index Node Creation Failed.\n"));
    EXPECT_EQ(interactive(10, "5 50"), "Enter Parent Node Num:Enter Target Address:"
                                       "I2C Open error (Permission denied)\n"
                                       "Device Node Creation Failed.\n");
}

} // namespace

} // namespace zolt::test
