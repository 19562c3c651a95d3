#include "i2c/dynamic_nodes.h"

#include "i2c/bus_device.h"
#include "tests/i2c/device_type_menu.h"
#include "tests/support/bus_devices.h"
#include "tests/support/console.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace zolt::test {

namespace {

const std::string query8 = "05 00 00 00 00 00 00 00 08 00 00 00";
const std::string query10 = "05 00 00 00 00 00 00 00 0A 00 00 00";

// Lets the bus answer the queries for properties 8 and 10 with these values.
void answerQueries(const std::string& property8, const std::string& property10) {
    busDevices().answers.push_back({.reply = bytesOf(property8)});
    busDevices().answers.push_back({.reply = bytesOf(property10)});
}

std::vector<std::string> creationOn(const std::string& path) {
    return {"open " + path + " O_RDWR", "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 4]",
            "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 4]",
            "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 8]", "close"};
}

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes record(std::map<std::size_t, std::string> fields) {
    fields[0] = "54 45 53 4B";
    return controlRecord(fields);
}

class DynamicNodes : public testing::Test {
protected:
    DynamicNodes() { resetBusDevices(); }
    void TearDown() override {
        EXPECT_EQ(openBusDevices(), 0);
        EXPECT_TRUE(busDevices().answers.empty());
    }
};

TEST_F(DynamicNodes, AQueryReturnsTheValue) {
    busDevices().answers = {{.reply = bytesOf("78 56 34 F2")}};
    const BusDevice bus("/dev/i2c-5");
    EXPECT_EQ(queryNodeProperty(-2, bus.descriptor(), 0x1A), 0xF2345678);
    EXPECT_EQ(busDevices().records,
              (std::vector<Bytes>{record({{4, "05 00 00 00 1A 00 00 00 FE FF FF FF"}})}));
}

TEST_F(DynamicNodes, ARefusedQueryIsPrinted) {
    busDevices().answers = {{.error = ENODATA}};
    const BusDevice bus("/dev/i2c-5");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(queryNodeProperty(8, bus.descriptor(), 0), 0xFFFFFFFF); }),
              "Status is -1 (No data available)\n");
}

TEST_F(DynamicNodes, AnIoctlThatReturnsZeroIsNoRefusal) {
    busDevices().answers = {{.reply = bytesOf("78 56 34 F2"), .result = 0}};
    const BusDevice bus("/dev/i2c-5");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(queryNodeProperty(8, bus.descriptor(), 0), 0xF2345678); }),
              "");
}

TEST_F(DynamicNodes, AnIndexNodeGetsThePropertiesOfItsParent) {
    answerQueries("11 22 33 44", "55 66 77 88");
    busDevices().answers.push_back({.reply = bytesOf("07 00 00 00 14 00 00 00")});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(24, 3, 5), 20); }),
              "Index Node Status:Node Status: [7] &  Name: [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().calls, creationOn("/dev/i2c-5"));
    EXPECT_EQ(busDevices().records,
              (std::vector<Bytes>{record({{4, query8}}), record({{4, query10}}),
                                  record({{4, "06 00 00 00"},
                                          {18, "03 00 00 00"},
                                          {30, "55 66 77 88"},
                                          {74, "11 22 33 44"},
                                          {78, "50 55 43 4B"}})})); // PUCK
    EXPECT_EQ(busDevices().replyAreas.back(), Bytes(8));
}

TEST_F(DynamicNodes, AnIndexNodeOfATypeWithoutANameSendsNone) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 01 00 00 00")});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(58, 0xFFFFFFFF, 5), 1); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-1]\n");
    EXPECT_EQ(busDevices().records.back(), record({{4, "06 00 00 00"}, {18, "FF FF FF FF"}}));
}

TEST_F(DynamicNodes, FailedQueriesDoNotStopTheCreation) {
    busDevices().answers = {
        {.error = EIO}, {.error = ETIMEDOUT}, {.reply = bytesOf("00 00 00 00 15 00 00 00")}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(12, 1, 5), 21); }),
              "Status is -1 (Input/output error)\n"
              "Status is -1 (Connection timed out)\n"
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-21]\n");
    // Each refusal is out before the driver is asked again, and before the bus is closed.
    const std::string first = "Status is -1 (Input/output error)\n";
    const std::string both = first + "Status is -1 (Connection timed out)\n";
    EXPECT_EQ(busDevices().printed, (std::vector<std::string>{"", "", first, both, both}));
    EXPECT_EQ(busDevices().records.back(), record({{4, "06 00 00 00"},
                                                   {18, "01 00 00 00"},
                                                   {30, "FF FF FF FF"},
                                                   {74, "FF FF FF FF"},
                                                   {78, "50 53 55"}})); // PSU
}

TEST_F(DynamicNodes, AParentThatCannotBeOpenedGetsNoRequest) {
    busDevices().openErrors = {{"/dev/i2c-5", EACCES}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(24, 3, 5), 0xFFFFFFFF); }),
              "I2C Open error (Permission denied)\n");
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c-5 O_RDWR"}));
}

TEST_F(DynamicNodes, ARefusedIndexNodeIsPrintedWithItsOwnError) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.error = EEXIST});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(24, 3, 5), 0xFFFFFFFF); }),
              "Status is -1 (File exists)\n");
    EXPECT_EQ(busDevices().calls, creationOn("/dev/i2c-5"));
}

TEST_F(DynamicNodes, NumbersOfAReplyArePrintedSigned) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("FE FF FF FF 00 00 00 80")});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createIndexNode(24, 3, 5), 0x80000000); }),
              "Index Node Status:Node Status: [-2] &  Name: [/dev/i2c--2147483648]\n");
}

TEST_F(DynamicNodes, ADeviceNodeGetsTheDevicePart) {
    answerQueries("11 22 33 44", "55 66 77 88");
    busDevices().answers.push_back({.reply = bytesOf("09 00 00 00 14 00 00 00"), .result = 2});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDeviceNode(46, 3, 20, 0x50), 2); }),
              "Device Node Status: [9] &  Name: [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().calls, creationOn("/dev/i2c-20"));
    EXPECT_EQ(busDevices().records[0], record({{4, query8}}));
    EXPECT_EQ(busDevices().records[1], record({{4, query10}}));
    EXPECT_EQ(busDevices().records[2], bytesOf(R"(
        54 45 53 4B 06 00 00 00 00 00 00 00 00 00 00 00
        00 00 03 00 00 00 00 00 00 00 00 00 00 00 55 66
        77 88 00 00 00 00 10 00 00 00 00 00 00 00 00 00
        00 00 64 00 00 00 00 01 00 00 28 00 00 00 00 00
        00 00 00 00 00 00 50 00 00 00 11 22 33 44 50 4F
        55 54 00 00 00 00 00 00 00 00 00 00 00 00 2F 64
        65 76 2F 69 32 63 2D 32 30 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00)"));
}

TEST_F(DynamicNodes, ADeviceNodesBusThatCannotBeOpenedGetsNoRequest) {
    busDevices().openErrors = {{"/dev/i2c-20", EBUSY}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDeviceNode(46, 3, 20, 0x50), -1); }),
              "I2C Open error (Device or resource busy)\n");
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c-20 O_RDWR"}));
}

TEST_F(DynamicNodes, ARefusedDeviceNodeIsPrintedWithItsOwnError) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.error = EINVAL});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDeviceNode(46, 3, 20, 0x50), -1); }),
              "Status is -1 (Invalid argument)\n");
    EXPECT_EQ(busDevices().calls, creationOn("/dev/i2c-20"));
}

TEST_F(DynamicNodes, BothNodesAreCreatedFromTheOperatorsAnswers) {
    answerQueries("01 00 00 00", "02 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    answerQueries("03 00 00 00", "04 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDynamicNodes(), 0); }, "24\n3\n5\n50\n"),
              deviceTypeMenu +
                  std::string("Enter Index:Enter Parent Node Num:Enter Target Address:"
                              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
                              "Device Node Status: [0] &  Name: [/dev/i2c-20]\n"));
    EXPECT_EQ(busDevices().calls, joined(creationOn("/dev/i2c-5"), creationOn("/dev/i2c-20")));
    EXPECT_EQ(busDevices().records[5], record({{4, "06 00 00 00"},
                                               {18, "03 00 00 00"},
                                               {30, "04 00 00 00"},
                                               {38, "10 00 00 00"},
                                               {50, "64 00 00 00"},
                                               {54, "00 01 00 00"},
                                               {58, "28 00 00 00"},
                                               {70, "50 00 00 00"}, // typed as hexadecimal
                                               {74, "03 00 00 00"},
                                               {78, "50 55 43 4B"},
                                               {94, "2F 64 65 76 2F 69 32 63 2D 32 30"}}));
}

TEST_F(DynamicNodes, ATargetMayHaveAPrefix) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.error = EIO});
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDynamicNodes(), 0); }, "-7 -8 5 0x1a"),
              deviceTypeMenu +
                  std::string("Enter Index:Enter Parent Node Num:Enter Target Address:"
                              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
                              "Status is -1 (Input/output error)\n"
                              "Device Node Creation Failed.\n"));
    EXPECT_EQ(busDevices().records[2], record({{4, "06 00 00 00"}, {18, "F8 FF FF FF"}}));
    EXPECT_EQ(busDevices().records[5], record({{4, "06 00 00 00"},
                                               {18, "F8 FF FF FF"},
                                               {38, "10 00 00 00"},
                                               {50, "64 00 00 00"},
                                               {54, "00 01 00 00"},
                                               {58, "28 00 00 00"},
                                               {70, "1A 00 00 00"},
                                               {94, "2F 64 65 76 2F 69 32 63 2D 32 30"}}));
}

TEST_F(DynamicNodes, WithoutATargetOnlyTheIndexNodeIsCreated) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "Index Node Creation Failed.\n");
    EXPECT_EQ(busDevices().calls, creationOn("/dev/i2c-5"));
}

TEST_F(DynamicNodes, AnIndexNodeOnBusMinusOneIsAFailure) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 FF FF FF FF")});
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0x50); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c--1]\n"
              "Index Node Creation Failed.\n");
}

TEST_F(DynamicNodes, WithoutItsParentBusNoDeviceNodeIsCreated) {
    busDevices().openErrors = {{"/dev/i2c-5", ENOENT}};
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0x50); }),
              "I2C Open error (No such file or directory)\n"
              "Index Node Creation Failed.\n");
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c-5 O_RDWR"}));
}

TEST_F(DynamicNodes, ADeviceNodesBusThatCannotBeOpenedFailsTheDevice) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    busDevices().openErrors = {{"/dev/i2c-20", ENOENT}};
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0x50); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "I2C Open error (No such file or directory)\n"
              "Device Node Creation Failed.\n");
}

TEST_F(DynamicNodes, OnlyANegativeResultIsARefusal) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00"), .result = 0});
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00"), .result = 0});
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0x50); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n"
              "Device Node Status: [0] &  Name: [/dev/i2c-20]\n");
}

TEST_F(DynamicNodes, AnAnswerThatIsNoNumberCreatesNothing) {
    const std::pair<const char*, const char*> dialogues[] = {
        {"x", "\nInvalid Device Type\n"},
        {"24 x", "Enter Index:\nInvalid Index\n"},
        {"24 3 x", "Enter Index:Enter Parent Node Num:\nInvalid Parent Node\n"},
        {"24 3 5 x",
         "Enter Index:Enter Parent Node Num:Enter Target Address:\nInvalid Target Address\n"},
    };
    for (const auto& [input, output] : dialogues) {
        EXPECT_EQ(outputOf([] { EXPECT_EQ(createDynamicNodes(), 2); }, input),
                  deviceTypeMenu + std::string(output));
    }
    EXPECT_TRUE(busDevices().calls.empty());
}

TEST_F(DynamicNodes, AtTheEndOfInputEveryAnswerHasAllBitsSet) {
    busDevices().openErrors = {{"/dev/i2c--1", ENOENT}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(createDynamicNodes(), 0); }),
              deviceTypeMenu + std::string("Enter Index:Enter Parent Node Num:"
                                           "Enter Target Address:"
                                           "I2C Open error (No such file or directory)\n"
                                           "Index Node Creation Failed.\n"));
    EXPECT_EQ(busDevices().calls, (std::vector<std::string>{"open /dev/i2c--1 O_RDWR"}));
}

TEST_F(DynamicNodes, AtTheEndOfInputTypeIndexAndTargetAreSentWithAllBitsSet) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    (void)outputOf([] { EXPECT_EQ(createDynamicNodes(), 0); });
    EXPECT_EQ(busDevices().records[5], record({{4, "06 00 00 00"},
                                               {18, "FF FF FF FF"},
                                               {38, "10 00 00 00"},
                                               {50, "64 00 00 00"},
                                               {54, "00 01 00 00"},
                                               {58, "28 00 00 00"},
                                               {70, "FF FF FF FF"},
                                               {94, "2F 64 65 76 2F 69 32 63 2D 32 30"}}));
}

TEST_F(DynamicNodes, ADeviceIsRemovedByItsTarget) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "20\n50\n"),
              "Enter Parent Node Num:Enter Target Address:"
              "Device Remove Status: [1] Under Parent Node: [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().calls,
              (std::vector<std::string>{"open /dev/i2c-20 O_RDWR",
                                        "ioctl 0x0707: [0x0000 0x0080 164]", "close"}));
    EXPECT_EQ(busDevices().records, (std::vector<Bytes>{record({{4, "07 00 00 00 50 00 00 00"}})}));
}

TEST_F(DynamicNodes, ARefusedRemovalPrintsTheLineOfAFailedCreation) {
    busDevices().answers = {{.error = ENODEV}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "20 51"),
              "Enter Parent Node Num:Enter Target Address:"
              "Status is -1 (No such device)\n"
              "Device Node Creation Failed.\n");
    EXPECT_EQ(busDevices().calls.back(), "close");
}

TEST_F(DynamicNodes, ARemovalFromABusThatCannotBeOpenedFails) {
    busDevices().openErrors = {{"/dev/i2c-20", ENOENT}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "20 51"),
              "Enter Parent Node Num:Enter Target Address:"
              "I2C Open error (No such file or directory)\n"
              "Device Node Creation Failed.\n");
}

TEST_F(DynamicNodes, ARemovalNeedsNumbers) {
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 2); }, "x"),
              "Enter Parent Node Num:\nInvalid Index Node\n");
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 2); }, "20 x"),
              "Enter Parent Node Num:Enter Target Address:\nInvalid Target Address\n");
    EXPECT_TRUE(busDevices().calls.empty());
}

TEST_F(DynamicNodes, ARemovalWithoutAnyMessageIsNoRefusal) {
    busDevices().answers = {{.result = 0}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "20\n50\n"),
              "Enter Parent Node Num:Enter Target Address:"
              "Device Remove Status: [0] Under Parent Node: [/dev/i2c-20]\n");
}

TEST_F(DynamicNodes, ALongBusNumberIsCutForTheParentOfAnIndexNodeAlone) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 47 42 0F 00")}); // 1000007
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 47 42 0F 00")});
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 2000007, 0x50); }),
              "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-1000007]\n"
              "Device Node Status: [0] &  Name: [/dev/i2c-1000007]\n");
    EXPECT_EQ(busDevices().calls,
              joined(creationOn("/dev/i2c-200000"), creationOn("/dev/i2c-1000007")));
    // The record's own path is a field of 16 bytes: "/dev/i2c-100000".
    EXPECT_EQ(
        busDevices().records.back(),
        record({{4, "06 00 00 00"},
                {18, "03 00 00 00"},
                {38, "10 00 00 00 00 00 00 00 00 00 00 00 64 00 00 00 00 01 00 00 28 00 00 00"},
                {70, "50 00 00 00"},
                {78, "50 55 43 4B"}, // PUCK
                {94, "2F 64 65 76 2F 69 32 63 2D 31 30 30 30 30 30"}}));
}

TEST_F(DynamicNodes, ARemovalOpensTheWholePath) {
    busDevices().answers = {{.result = 1}};
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "1000007"),
              "Enter Parent Node Num:Enter Target Address:"
              "Device Remove Status: [1] Under Parent Node: [/dev/i2c-1000007]\n");
    EXPECT_EQ(busDevices().calls[0], "open /dev/i2c-1000007 O_RDWR");
    EXPECT_EQ(busDevices().records[0], record({{4, "07 00 00 00 FF FF FF FF"}}));
}

TEST_F(DynamicNodes, TheBusIsClosedBeforeTheResultIsPrinted) {
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    answerQueries("00 00 00 00", "00 00 00 00");
    busDevices().answers.push_back({.reply = bytesOf("00 00 00 00 14 00 00 00")});
    const std::string indexNode = "Index Node Status:Node Status: [0] &  Name: [/dev/i2c-20]\n";
    EXPECT_EQ(outputOf([] { createNodes(24, 3, 5, 0x50); }),
              indexNode + "Device Node Status: [0] &  Name: [/dev/i2c-20]\n");
    // Two nodes, each by an open, three ioctls and a close.
    EXPECT_EQ(busDevices().printed,
              joined(std::vector<std::string>(5, ""), std::vector<std::string>(5, indexNode)));

    resetBusDevices();
    busDevices().answers = {{.result = 1}};
    const std::string prompts = "Enter Parent Node Num:Enter Target Address:";
    EXPECT_EQ(outputOf([] { EXPECT_EQ(deleteDeviceNode(), 0); }, "20 50"),
              prompts + "Device Remove Status: [1] Under Parent Node: [/dev/i2c-20]\n");
    EXPECT_EQ(busDevices().printed, std::vector<std::string>(3, prompts));
}

} // namespace

} // namespace zolt::test
