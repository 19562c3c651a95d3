#include "i2c/bus_recovery.h"

#include "tests/support/bus_devices.h"
#include "tests/support/console.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace zolt::test {

namespace {

class BusRecovery : public testing::Test {
protected:
    BusRecovery() { resetBusDevices(); }
    void TearDown() override {
        EXPECT_EQ(openBusDevices(), 0);
        EXPECT_TRUE(busDevices().answers.empty());
    }

    static std::string recovering(const char* input, int status) {
        return outputOf([=] { EXPECT_EQ(performBusRecovery(), status); }, input);
    }

    // A recovery sends all three modes, even if some fail.
    static void expectAllModes() {
        EXPECT_EQ(busDevices().records,
                  (std::vector<Bytes>{
                      controlRecord({{0, "54 45 53 4B 08 00 00 00 60 00 00 00"}}),
                      controlRecord({{0, "54 45 53 4B 08 00 00 00 61 00 00 00"}}),
                      controlRecord({{0, "54 45 53 4B 08 00 00 00 62 00 00 00"}}),
                  }));
        std::vector<std::string> calls;
        for (int i = 0; i < 3; ++i) {
            calls.insert(calls.end(),
                         {"open /dev/i2c-5 O_RDWR", "ioctl 0x0707: [0x0000 0x0080 164]", "close"});
        }
        EXPECT_EQ(busDevices().calls, calls);
    }
};

constexpr BusAnswer done{.result = 1};
constexpr BusAnswer refused{.error = EIO};

TEST_F(BusRecovery, GoesThroughAllThreeModes) {
    busDevices().answers = {done, done, done};
    EXPECT_EQ(recovering("5\n", 0), "Enter Node Num:"
                                    "Status [1] for node name: [/dev/i2c-5]\n"
                                    "Status [1] for node name: [/dev/i2c-5]\n"
                                    "Status [1] for node name: [/dev/i2c-5]\n");
    expectAllModes();
}

TEST_F(BusRecovery, AFailedFirstStepDoesNotFailTheRecovery) {
    busDevices().answers = {refused, done, done};
    EXPECT_EQ(recovering("5", 0), "Enter Node Num:"
                                  "Status [-1] for node name: [/dev/i2c-5]\n"
                                  "IOCTL failed with status -1\n"
                                  "I2C_CP_MODE_TYPE_RESET_STOP failed. \n"
                                  "Status [1] for node name: [/dev/i2c-5]\n"
                                  "Status [1] for node name: [/dev/i2c-5]\n");
    expectAllModes();
}

TEST_F(BusRecovery, AFailedSecondStepDoesNotFailTheRecovery) {
    busDevices().answers = {done, refused, done};
    EXPECT_EQ(recovering("5", 0), "Enter Node Num:"
                                  "Status [1] for node name: [/dev/i2c-5]\n"
                                  "Status [-1] for node name: [/dev/i2c-5]\n"
                                  "IOCTL failed with status -1\n"
                                  "I2C_CP_MODE_TYPE_RESET_HOLD_CLOCK_LOW failed. \n"
                                  "Status [1] for node name: [/dev/i2c-5]\n");
    expectAllModes();
}

TEST_F(BusRecovery, AnIoctlThatReturnsZeroIsNoRefusal) {
    busDevices().answers = {{.result = 0}, {.result = 0}, {.result = 0}};
    EXPECT_EQ(recovering("5", 0), "Enter Node Num:"
                                  "Status [0] for node name: [/dev/i2c-5]\n"
                                  "Status [0] for node name: [/dev/i2c-5]\n"
                                  "Status [0] for node name: [/dev/i2c-5]\n");
    expectAllModes();
}

TEST_F(BusRecovery, AFailedLastStepFailsTheRecovery) {
    busDevices().answers = {done, done, refused};
    EXPECT_EQ(recovering("5", 2), "Enter Node Num:"
                                  "Status [1] for node name: [/dev/i2c-5]\n"
                                  "Status [1] for node name: [/dev/i2c-5]\n"
                                  "Status [-1] for node name: [/dev/i2c-5]\n"
                                  "IOCTL failed with status -1\n"
                                  "I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL failed. \n");
    expectAllModes();
}

TEST_F(BusRecovery, ABusThatCannotBeOpenedFailsEveryStep) {
    busDevices().openErrors = {{"/dev/i2c-9", ENOENT}};
    EXPECT_EQ(recovering("9", 2), "Enter Node Num:"
                                  "I2C Open error (No such file or directory)\n"
                                  "I2C_CP_MODE_TYPE_RESET_STOP failed. \n"
                                  "I2C Open error (No such file or directory)\n"
                                  "I2C_CP_MODE_TYPE_RESET_HOLD_CLOCK_LOW failed. \n"
                                  "I2C Open error (No such file or directory)\n"
                                  "I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL failed. \n");
    EXPECT_TRUE(busDevices().records.empty());
}

TEST_F(BusRecovery, ANodeThatIsNoNumberIsAnInvalidDeviceType) {
    EXPECT_EQ(recovering("x", 2), "Enter Node Num:\nInvalid Device Type\n");
    EXPECT_TRUE(busDevices().calls.empty());
}

TEST_F(BusRecovery, AtTheEndOfInputTheNodeIsMinusOne) {
    busDevices().openErrors = {{"/dev/i2c--1", ENOENT}};
    (void)recovering("", 2);
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>(3, "open /dev/i2c--1 O_RDWR")));
}

TEST_F(BusRecovery, OneStepPrintsItsResultWhetherItFailsOrNot) {
    busDevices().answers = {done, refused};
    EXPECT_EQ(outputOf([] {
                  EXPECT_EQ(busRecoveryStep(1234567, I2C_CP_MODE_TYPE_RESET_STOP), 0);
                  EXPECT_EQ(busRecoveryStep(5, I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL), 2);
              }),
              "Status [1] for node name: [/dev/i2c-1234567]\n"
              "Status [-1] for node name: [/dev/i2c-5]\n"
              "IOCTL failed with status -1\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c-1234567 O_RDWR");
}

} // namespace

} // namespace zolt::test
