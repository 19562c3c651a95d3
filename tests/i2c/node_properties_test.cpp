#include "i2c/node_properties.h"

#include "tests/i2c/device_type_menu.h"
#include "tests/support/bus_devices.h"
#include "tests/support/console.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace zolt::test {

namespace {

class NodeProperties : public testing::Test {
protected:
    NodeProperties() { resetBusDevices(); }
    void TearDown() override {
        EXPECT_EQ(openBusDevices(), 0);
        EXPECT_TRUE(busDevices().answers.empty());
    }

    static std::string reading(const char* input, int status) {
        return outputOf([=] { EXPECT_EQ(readNodeProperty(), status); }, input);
    }
    static std::string updating(const char* input, int status) {
        return outputOf([=] { EXPECT_EQ(promptUpdateNodeProperty(), status); }, input);
    }
};

const std::string readPrompts = "Enter Parent Node Num:Enter Property Type:Enter Target Address:";
const std::string updatePrompts =
    deviceTypeMenu + std::string("Enter Parent Node Num:Enter Index:Enter Target Address:"
                                 "Enter Property Type:Enter Property Value:");

TEST_F(NodeProperties, APropertyIsReadFromItsTarget) {
    busDevices().answers = {{.reply = bytesOf("2A 00 00 00")}};
    EXPECT_EQ(reading("5\n7\n1A\n", 0),
              readPrompts + "Property ID: [7] and Property Value: [42]\n");
    EXPECT_EQ(
        busDevices().calls,
        (std::vector<std::string>{"open /dev/i2c-5 O_RDWR",
                                  "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 4]", "close"}));
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 05 00 00 00 1A 00 00 00 07 00 00 00"}}));
}

TEST_F(NodeProperties, TheBusIsClosedBeforeTheResultIsPrinted) {
    busDevices().answers = {{.reply = bytesOf("2A 00 00 00")}, {.result = 1}};
    EXPECT_EQ(reading("5 7 1A", 0), readPrompts + "Property ID: [7] and Property Value: [42]\n");
    EXPECT_EQ(updating("24 20 3 1A 7 42", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : 42 for node_name [/dev/i2c-20]\n");
    // Each by an open, an ioctl and a close.
    EXPECT_EQ(busDevices().printed,
              (std::vector<std::string>{readPrompts, readPrompts, readPrompts, updatePrompts,
                                        updatePrompts, updatePrompts}));
}

TEST_F(NodeProperties, ALongBusNumberIsCutForAnUpdateAlone) {
    busDevices().answers = {{.reply = bytesOf("2A 00 00 00")}, {.result = 1}};
    EXPECT_EQ(reading("1000007 7 0", 0),
              readPrompts + "Property ID: [7] and Property Value: [42]\n");
    EXPECT_EQ(updating("24 1000007 3 1A 7 42", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : 42 for node_name [/dev/i2c-100000]\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c-1000007 O_RDWR");
    EXPECT_EQ(busDevices().calls[3], "open /dev/i2c-100000 O_RDWR");
}

TEST_F(NodeProperties, ARefusalIsPrintedBeforeTheBusIsClosed) {
    busDevices().answers = {{.error = EIO}, {.error = EPERM}};
    EXPECT_EQ(reading("5 7 1A", 2),
              readPrompts + "Status is -1 (Input/output error)\nProperty Read Failed.\n");
    EXPECT_EQ(busDevices().printed.back(),
              readPrompts + "Status is -1 (Input/output error)\nProperty Read Failed.\n");
    EXPECT_EQ(updating("24 20 3 1A 7 42", 2),
              updatePrompts + "IOCTL failed with status -1\nFailed to update property. \n");
    EXPECT_EQ(busDevices().printed.back(), updatePrompts + "IOCTL failed with status -1\n");
}

TEST_F(NodeProperties, AnIoctlThatReturnsZeroIsNoRefusal) {
    busDevices().answers = {{.reply = bytesOf("2A 00 00 00"), .result = 0}, {.result = 0}};
    EXPECT_EQ(reading("5 7 1A", 0), readPrompts + "Property ID: [7] and Property Value: [42]\n");
    EXPECT_EQ(updating("24 20 3 1A 7 42", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : 42 for node_name [/dev/i2c-20]\n");
}

TEST_F(NodeProperties, AValueIsPrintedAsSigned) {
    busDevices().answers = {{.reply = bytesOf("FE FF FF FF")}};
    EXPECT_EQ(reading("5 -7 0", 0), readPrompts + "Property ID: [-7] and Property Value: [-2]\n");
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 05 00 00 00 00 00 00 00 F9 FF FF FF"}}));
}

TEST_F(NodeProperties, AValueWithAllBitsSetIsAFailure) {
    busDevices().answers = {{.reply = bytesOf("FF FF FF FF")}};
    EXPECT_EQ(reading("5 7 0", 2), readPrompts + "Property Read Failed.\n");
}

TEST_F(NodeProperties, ARefusedReadIsPrinted) {
    busDevices().answers = {{.error = ENXIO}};
    EXPECT_EQ(reading("5 7 0", 2), readPrompts + "Status is -1 (No such device or address)\n"
                                                 "Property Read Failed.\n");
    EXPECT_EQ(busDevices().calls.back(), "close");
}

TEST_F(NodeProperties, ABusThatCannotBeOpenedIsNotRead) {
    busDevices().openErrors = {{"/dev/i2c-5", EACCES}};
    EXPECT_EQ(reading("5 7 0", 2), readPrompts + "I2C Open error (Permission denied)\n");
}

TEST_F(NodeProperties, AReadNeedsNumbers) {
    EXPECT_EQ(reading("x", 2), "Enter Parent Node Num:\nInvalid Index Node\n");
    EXPECT_EQ(reading("5 x", 2),
              "Enter Parent Node Num:Enter Property Type:\nInvalid Property Type\n");
    EXPECT_EQ(reading("5 7 x", 2), readPrompts + "\nInvalid Target Address\n");
    EXPECT_TRUE(busDevices().calls.empty());
}

TEST_F(NodeProperties, AtTheEndOfInputAReadAsksWithAllBitsSet) {
    busDevices().answers = {{.reply = bytesOf("00 00 00 00")}};
    EXPECT_EQ(reading("", 0), readPrompts + "Property ID: [-1] and Property Value: [0]\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c--1 O_RDWR");
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 05 00 00 00 FF FF FF FF FF FF FF FF"}}));
}

TEST_F(NodeProperties, AnUpdateSendsItsNodeAndItsValue) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(updating("24\n20\n3\n1A\n7\n42\n", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : 42 for node_name [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().calls,
              (std::vector<std::string>{"open /dev/i2c-20 O_RDWR",
                                        "ioctl 0x0707: [0x0000 0x0080 164]", "close"}));
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 04 00 00 00 03 00 00 00 1A 00 00 00"},
                             {16, "2A 00 00 00 07 00 00 00"},
                             {24, "50 55 43 4B"}})); // PUCK
}

TEST_F(NodeProperties, AValueOfMinusOneIsSentWithAllBitsSet) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(updating("58 20 3 0 7 -1", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : -1 for node_name [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 04 00 00 00 03 00 00 00 00 00 00 00"},
                             {16, "FF FF FF FF 07 00 00 00"}}));
}

TEST_F(NodeProperties, ARefusedUpdateIsPrintedWithItsResult) {
    busDevices().answers = {{.error = EPERM}};
    EXPECT_EQ(updating("24 20 3 0 7 1", 2), updatePrompts + "IOCTL failed with status -1\n"
                                                            "Failed to update property. \n");
    EXPECT_EQ(busDevices().calls.back(), "close");
}

TEST_F(NodeProperties, ABusThatCannotBeOpenedIsNotUpdated) {
    busDevices().openErrors = {{"/dev/i2c-20", EBUSY}};
    EXPECT_EQ(updating("24 20 3 0 7 1", 2), updatePrompts +
                                                "I2C Open error (Device or resource busy)\n"
                                                "Failed to update property. \n");
}

TEST_F(NodeProperties, AnUpdateNeedsNumbers) {
    const std::string menu = deviceTypeMenu;
    EXPECT_EQ(updating("x", 2), menu + "\nInvalid Device Type\n");
    EXPECT_EQ(updating("24 x", 2), menu + "Enter Parent Node Num:\nInvalid Parent Node\n");
    EXPECT_EQ(updating("24 20 x", 2), menu + "Enter Parent Node Num:Enter Index:\nInvalid Index\n");
    EXPECT_EQ(updating("24 20 3 x", 2), menu + "Enter Parent Node Num:Enter Index:"
                                               "Enter Target Address:\nInvalid Target Address\n");
    EXPECT_EQ(updating("24 20 3 0 x", 2),
              menu + "Enter Parent Node Num:Enter Index:Enter Target Address:"
                     "Enter Property Type:\nInvalid Property Type\n");
    EXPECT_EQ(updating("24 20 3 0 7 x", 2), updatePrompts + "\nInvalid Property Value\n");
    EXPECT_TRUE(busDevices().calls.empty());
}

TEST_F(NodeProperties, AtTheEndOfInputAnUpdateIsSentWithAllBitsSet) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(updating("", 0),
              updatePrompts +
                  "Updated Property ID : -1 and value : -1 for node_name [/dev/i2c--1]\n");
    EXPECT_EQ(busDevices().records[0],
              controlRecord({{0, "54 45 53 4B 04 00 00 00 FF FF FF FF FF FF FF FF"},
                             {16, "FF FF FF FF FF FF FF FF"}}));
}

TEST_F(NodeProperties, ALongBusNumberIsCutInDeviceAndText) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(updating("24 12345678 3 0 7 1", 0),
              updatePrompts +
                  "Updated Property ID : 7 and value : 1 for node_name [/dev/i2c-123456]\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c-123456 O_RDWR");
}

} // namespace

} // namespace zolt::test
