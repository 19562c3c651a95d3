// Tests the core of the bus driver without a server.
#include "standin/i2c_bus/core/bus_core.h"

#include "tests/standin/bus_fault.h"
#include "tests/standin/control_request.h"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace standin {
namespace {

class BusCoreTest : public testing::Test {
protected:
    BusCoreTest() {
        busCoreInit(core_.get());
        EXPECT_EQ(busCoreAddBus(core(), 5), 0);
    }

    [[nodiscard]] BusCore* core() const { return core_.get(); }
    int send(ControlRequest& request, std::uint32_t bus = 5) const {
        return busCoreTransfer(core(), bus, request.messages.data(),
                               static_cast<std::uint32_t>(request.messages.size()));
    }
    int send(ControlRequest&& request, std::uint32_t bus = 5) const { return send(request, bus); }

    [[nodiscard]] int query(std::uint32_t bus, std::uint32_t target, std::uint32_t id,
                            std::uint32_t expected) const {
        ControlRequest request = getProperty(target, id);
        const int result = send(request, bus);
        EXPECT_EQ(request.replyWord(0), expected);
        return result;
    }

    // Creates an index node and returns its bus number.
    [[nodiscard]] std::uint32_t indexNode(std::uint32_t index, const std::string& type) const {
        ControlRequest request = createNode(index, 0, type, "");
        EXPECT_EQ(send(request), 2);
        EXPECT_EQ(request.replyWord(0), BUS_CORE_NODE_CREATED);
        return request.replyWord(4);
    }

    std::unique_ptr<BusCore> core_ = std::make_unique<BusCore>();
};

TEST_F(BusCoreTest, onlyDescribedBusesOpen) {
    EXPECT_EQ(busCoreOpen(core(), 5), 0);
    EXPECT_EQ(busCoreOpen(core(), 6), -ENOENT);
}

TEST_F(BusCoreTest, descriptionsAreChecked) {
    std::uint8_t memory = 0;
    EXPECT_EQ(busCoreAddBus(core(), 5), -EEXIST);
    EXPECT_EQ(busCoreAddBus(core(), 1048576), -EINVAL);
    EXPECT_EQ(busCoreAddIndexNode(core(), 7, 6, 1, "PUCK"), -ENODEV);
    EXPECT_EQ(busCoreAddIndexNode(core(), 5, 5, 1, "PUCK"), -EEXIST);
    EXPECT_EQ(busCoreAddMemory(core(), 6, 0x50, &memory, 1, 1, false), -ENODEV);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x00, &memory, 1, 1, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x80, &memory, 1, 1, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 0, 1, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 257, 1, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 65537, 2, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 3, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, nullptr, 1, 1, false), -EINVAL);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), -EEXIST);
    EXPECT_EQ(busCoreSetProperty(core(), 5, 0x51, 1, 1), -ENODEV);
    EXPECT_EQ(busCoreSetProperty(core(), 6, 0, 1, 1), -ENODEV);
    for (const int error : {0, -EIO}) {
        const BusCoreFault wrong = busFault(5, CONTROL_GET_PROPERTY, error);
        EXPECT_EQ(busCoreAddFault(core(), &wrong), -EINVAL);
    }
}

TEST_F(BusCoreTest, fullTablesRefuseMore) {
    for (std::uint32_t number = 100; core()->busCount < BUS_CORE_BUSES; ++number) {
        ASSERT_EQ(busCoreAddBus(core(), number), 0);
    }
    EXPECT_EQ(busCoreAddBus(core(), 99), -ENOSPC);
    EXPECT_EQ(send(createNode(1, 0, "PUCK", "")), -ENOSPC);

    std::uint8_t memory = 0;
    for (std::uint32_t i = 0; core()->deviceCount < BUS_CORE_DEVICES; ++i) {
        ASSERT_EQ(busCoreAddDeviceNode(core(), 100 + i / 100, 1 + i % 100, 0, ""), 0);
    }
    EXPECT_EQ(busCoreAddDeviceNode(core(), 5, 0x50, 0, ""), -ENOSPC);
    EXPECT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), -ENOSPC);
    EXPECT_EQ(send(createNode(1, 0x50, "PUCK", "/dev/i2c-5")), -ENOSPC);

    for (std::uint32_t id = 0; core()->propertyCount < BUS_CORE_PROPERTIES; ++id) {
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0, id, id), 0);
    }
    EXPECT_EQ(busCoreSetProperty(core(), 5, 0, 0xFFFF, 1), -ENOSPC);
    EXPECT_EQ(busCoreSetProperty(core(), 5, 0, 3, 33), 0); // replaces the old value
    EXPECT_EQ(query(5, 0, 3, 33), 2);

    const BusCoreFault fault = busFault(6, CONTROL_GET_PROPERTY, EIO);
    while (core()->faultCount < BUS_CORE_FAULTS) {
        ASSERT_EQ(busCoreAddFault(core(), &fault), 0);
    }
    EXPECT_EQ(busCoreAddFault(core(), &fault), -ENOSPC);
}

TEST_F(BusCoreTest, anInvalidDeviceNodeHasItsOwnErrorEvenInAFullTable) {
    ASSERT_EQ(busCoreAddDeviceNode(core(), 5, 0x50, 0, "PUCK"), 0);
    for (std::uint32_t id = 0; core()->propertyCount < BUS_CORE_PROPERTIES; ++id) {
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0, id, id), 0);
    }
    EXPECT_EQ(send(createNode(1, 0x50, "PUCK", "/dev/i2c-5")), -EEXIST);
    EXPECT_EQ(send(createNode(1, 0x80, "PUCK", "/dev/i2c-5")), -EINVAL);
    EXPECT_EQ(send(createNode(1, 0x51, "PUCK", "/dev/i2c-5")), -ENOSPC);
}

TEST_F(BusCoreTest, noRoomForANodesPropertiesCreatesNothing) {
    for (std::uint32_t id = 0; core()->propertyCount < BUS_CORE_PROPERTIES - 1; ++id) {
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0, id, id), 0);
    }
    EXPECT_EQ(send(createNode(1, 0, "PUCK", "")), -ENOSPC);
    EXPECT_EQ(send(createNode(1, 0x50, "PUCK", "/dev/i2c-5")), -ENOSPC);
    EXPECT_EQ(core()->busCount, 1);
    EXPECT_EQ(core()->deviceCount, 0);
}

TEST_F(BusCoreTest, aNodeIsCreatedAsLongAsItsPropertiesFit) {
    const std::uint32_t node = indexNode(1, "PUCK");
    for (std::uint32_t id = 100; core()->propertyCount < BUS_CORE_PROPERTIES - 1; ++id) {
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0, id, id), 0);
    }
    ControlRequest again = createNode(1, 0, "PUCK", "");
    EXPECT_EQ(send(again), 2);
    EXPECT_EQ(again.replyWord(0), BUS_CORE_NODE_USED);
    EXPECT_EQ(again.replyWord(4), node);
    ControlRequest one = createNode(2, 0, "PUCK", "");
    one.setWord(74, 0xFFFFFFFF);
    EXPECT_EQ(send(one), 2);
    ControlRequest none = createNode(3, 0, "PUCK", "");
    none.setWord(74, 0xFFFFFFFF);
    none.setWord(30, 0xFFFFFFFF);
    EXPECT_EQ(send(none), 2);
    EXPECT_EQ(core()->propertyCount, BUS_CORE_PROPERTIES);
}

TEST_F(BusCoreTest, propertiesAreToldApartByBusTargetAndId) {
    ASSERT_EQ(busCoreAddBus(core(), 6), 0);
    ASSERT_EQ(busCoreAddDeviceNode(core(), 5, 0x1A, 1, "PSU"), 0);
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 8, 1), 0);
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0x1A, 8, 0x80000002), 0);
    ASSERT_EQ(busCoreSetProperty(core(), 6, 0, 8, 3), 0);
    EXPECT_EQ(query(5, 0, 8, 1), 2);
    EXPECT_EQ(query(5, 0x1A, 8, 0x80000002), 2);
    EXPECT_EQ(query(6, 0, 8, 3), 2);
    EXPECT_EQ(query(5, 0, 9, 0), -ENOENT);
    EXPECT_EQ(query(5, 0x1B, 8, 0), -ENODEV);
}

TEST_F(BusCoreTest, anUpdateChangesOneProperty) {
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 8, 1), 0);
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 10, 2), 0);
    EXPECT_EQ(send(updateProperty(0, 10, 0xFFFFFFFE)), 1);
    EXPECT_EQ(query(5, 0, 8, 1), 2);
    EXPECT_EQ(query(5, 0, 10, 0xFFFFFFFE), 2);
    EXPECT_EQ(send(updateProperty(0, 11, 1)), -ENOENT);
    EXPECT_EQ(send(updateProperty(0x50, 10, 1)), -ENODEV);
}

TEST_F(BusCoreTest, anIndexNodeIsANewBusWithItsParentsProperties) {
    ASSERT_EQ(busCoreAddBus(core(), 19), 0);
    ControlRequest request = createNode(3, 0, "PUCK", "");
    request.setWord(74, 0x11);
    request.setWord(30, 0x22);
    EXPECT_EQ(send(request), 2);
    EXPECT_EQ(request.replyWord(0), BUS_CORE_NODE_CREATED);
    EXPECT_EQ(request.replyWord(4), 20);
    EXPECT_EQ(busCoreOpen(core(), 20), 0);
    EXPECT_EQ(query(20, 0, 8, 0x11), 2);
    EXPECT_EQ(query(20, 0, 10, 0x22), 2);
    const BusCoreBus* const node = busCoreFindBus(core(), 20);
    EXPECT_TRUE(node->isIndexNode);
    EXPECT_EQ(node->parent, 5);
    EXPECT_EQ(node->index, 3);
    EXPECT_STREQ(node->typeName, "PUCK");
}

TEST_F(BusCoreTest, aPropertyThatCouldNotBeQueriedIsNotPassedOn) {
    ControlRequest request = createNode(3, 0, "PUCK", "");
    request.setWord(74, 0xFFFFFFFF);
    request.setWord(30, 0x22);
    EXPECT_EQ(send(request), 2);
    EXPECT_EQ(query(6, 0, 8, 0), -ENOENT);
    EXPECT_EQ(query(6, 0, 10, 0x22), 2);
}

TEST_F(BusCoreTest, anExistingIndexNodeIsUsedAgain) {
    const std::uint32_t first = indexNode(3, "PUCK");
    ControlRequest again = createNode(3, 0, "PUCK", "");
    EXPECT_EQ(send(again), 2);
    EXPECT_EQ(again.replyWord(0), BUS_CORE_NODE_USED);
    EXPECT_EQ(again.replyWord(4), first);
    EXPECT_EQ(indexNode(4, "PUCK"), first + 1);
    EXPECT_EQ(indexNode(3, "PSU"), first + 2);
    EXPECT_EQ(indexNode(3, ""), first + 3);
    ControlRequest elsewhere = createNode(3, 0, "PUCK", "");
    EXPECT_EQ(send(elsewhere, first), 2);
    EXPECT_EQ(elsewhere.replyWord(4), first + 4);
}

TEST_F(BusCoreTest, busNumbersEndAtTheHighestBus) {
    ASSERT_EQ(busCoreAddBus(core(), BUS_CORE_HIGHEST_BUS), 0);
    EXPECT_EQ(send(createNode(3, 0, "PUCK", "")), -ENOSPC);
}

TEST_F(BusCoreTest, theLongestBusNumbersHaveAPathThatIsCutToItsField) {
    ASSERT_EQ(busCoreAddBus(core(), BUS_CORE_HIGHEST_BUS), 0);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-104857"), BUS_CORE_HIGHEST_BUS), 2);
    EXPECT_EQ(send(createNode(3, 0x51, "PUCK", "/dev/i2c-10485"), BUS_CORE_HIGHEST_BUS), -EINVAL);
}

TEST_F(BusCoreTest, aDeviceNodeIsCreatedOnce) {
    const std::uint32_t bus = indexNode(3, "PUCK");
    ControlRequest request = createNode(3, 0x50, "PUCK", "/dev/i2c-6");
    request.setWord(74, 0x11);
    request.setWord(30, 0x22);
    EXPECT_EQ(send(request, bus), 2);
    EXPECT_EQ(request.replyWord(0), BUS_CORE_NODE_CREATED);
    EXPECT_EQ(request.replyWord(4), bus);
    EXPECT_EQ(query(bus, 0x50, 8, 0x11), 2);
    EXPECT_EQ(query(bus, 0x50, 10, 0x22), 2);
    ControlRequest again = createNode(3, 0x50, "PUCK", "/dev/i2c-6");
    EXPECT_EQ(send(again, bus), -EEXIST);
    EXPECT_EQ(again.reply, std::vector<std::uint8_t>(8));
    EXPECT_EQ(busCoreFindDevice(core(), bus, 0x50)->index, 3);
    EXPECT_STREQ(busCoreFindDevice(core(), bus, 0x50)->typeName, "PUCK");
}

TEST_F(BusCoreTest, aDeviceNodeNamesItsBusAndAnAddressOfSevenBits) {
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-6")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-55")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0, "PUCK", "/dev/i2c-5")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0x80, "PUCK", "/dev/i2c-5")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0xFFFFFFFF, "PUCK", "/dev/i2c-5")), -EINVAL);
    EXPECT_EQ(core()->deviceCount, 0);
    ASSERT_EQ(busCoreAddBus(core(), 987654), 0);
    EXPECT_EQ(send(createNode(3, 0x7F, "PUCK", "/dev/i2c-987654"), 987654), 2);
    ASSERT_EQ(busCoreAddBus(core(), 0), 0);
    EXPECT_EQ(send(createNode(3, 0x01, "PUCK", "/dev/i2c-0"), 0), 2);
}

TEST_F(BusCoreTest, aWrongDevicePartIsRefused) {
    for (std::uint32_t number = 0; number < 8; ++number) {
        for (const std::uint32_t wrong : {1U, 17U, 0x01000000U, 0xFFFFFFFFU}) {
            ControlRequest device = createNode(3, 0x50, "PUCK", "/dev/i2c-5");
            device.setWord(38 + 4 * number, wrong);
            EXPECT_EQ(send(device), -EINVAL) << number;
            ControlRequest index = createNode(3, 0, "PUCK", "");
            index.setWord(38 + 4 * number, wrong);
            EXPECT_EQ(send(index), -EINVAL) << number;
        }
    }
    ControlRequest device = createNode(3, 0x50, "PUCK", "/dev/i2c-5");
    for (std::uint32_t number = 0; number < 8; ++number) {
        device.setWord(38 + 4 * number, 0); // the device part of an index node
    }
    EXPECT_EQ(send(device), -EINVAL);
    EXPECT_EQ(core()->busCount, 1);
    EXPECT_EQ(core()->deviceCount, 0);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-5")), 2);
}

TEST_F(BusCoreTest, aTextWithoutATerminatorIsRefused) {
    EXPECT_EQ(send(createNode(3, 0, "SIXTEEN LETTERS!", "")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-5000000")), -EINVAL);
    EXPECT_EQ(send(createNode(3, 0, "FIFTEEN LETTERS", "")), 2);
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 8, 1), 0);
    ControlRequest update = updateProperty(0, 8, 2);
    update.setText(24, "SIXTEEN LETTERS!");
    EXPECT_EQ(send(update), -EINVAL);
    EXPECT_EQ(query(5, 0, 8, 1), 2);
    update.record[24 + 15] = 0;
    EXPECT_EQ(send(update), 1);
    EXPECT_EQ(query(5, 0, 8, 2), 2);
}

TEST_F(BusCoreTest, bytesBehindATextAreIgnored) {
    ControlRequest request = createNode(3, 0, "PUCK", "");
    request.record[78 + 10] = 'X';
    EXPECT_EQ(send(request), 2);
    ControlRequest same = createNode(3, 0, "PUCK", "");
    EXPECT_EQ(send(same), 2);
    EXPECT_EQ(same.replyWord(0), BUS_CORE_NODE_USED);
}

TEST_F(BusCoreTest, aRemovedDeviceIsGoneWithItsProperties) {
    ASSERT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-5")), 2);
    ASSERT_EQ(send(createNode(4, 0x51, "PUCK", "/dev/i2c-5")), 2);
    EXPECT_EQ(send(removeDevice(0x50)), 1);
    EXPECT_EQ(query(5, 0x50, 8, 0), -ENODEV);
    EXPECT_EQ(query(5, 0x51, 8, 0), 2);
    EXPECT_EQ(send(removeDevice(0x50)), -ENODEV);
    EXPECT_EQ(send(removeDevice(0)), -ENODEV);
    EXPECT_EQ(core()->propertyCount, 2);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-5")), 2);
}

TEST_F(BusCoreTest, aDeviceWithMemoryOutlivesItsNode) {
    std::uint8_t memory[4] = {1, 2, 3, 4};
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, memory, 4, 1, false), 0);
    EXPECT_EQ(send(removeDevice(0x50)), -ENODEV);
    EXPECT_EQ(send(createNode(3, 0x50, "PUCK", "/dev/i2c-5")), 2);
    EXPECT_EQ(send(removeDevice(0x50)), 1);
    EXPECT_NE(busCoreFindDevice(core(), 5, 0x50), nullptr);
}

TEST_F(BusCoreTest, aRecoveryHoldsTheClockFromItsSecondStepToItsThird) {
    std::uint8_t memory[4] = {1, 2, 3, 4};
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, memory, 4, 1, false), 0);
    std::uint8_t byte = 0;
    i2c_msg read{.addr = 0x50, .flags = I2C_M_RD, .len = 1, .buf = &byte};
    EXPECT_EQ(send(recoverBus(96)), 1);
    EXPECT_EQ(busCoreTransfer(core(), 5, &read, 1), 1);
    EXPECT_EQ(send(recoverBus(97)), 1);
    EXPECT_EQ(busCoreTransfer(core(), 5, &read, 1), -ETIMEDOUT);
    EXPECT_EQ(send(recoverBus(98)), 1);
    EXPECT_EQ(busCoreTransfer(core(), 5, &read, 1), 1);
    EXPECT_EQ(send(recoverBus(95)), -EINVAL);
    EXPECT_EQ(send(recoverBus(99)), -EINVAL);
}

TEST_F(BusCoreTest, aMalformedRequestIsRefused) {
    struct Case {
        const char* what;
        int error;
        void (*spoil)(ControlRequest& request);
    };
    const Case cases[] = {
        {"magic", EINVAL, [](ControlRequest& r) { r.record[3] = 'k'; }},
        {"command 3", EOPNOTSUPP, [](ControlRequest& r) { r.setWord(4, 3); }},
        {"command 9", EOPNOTSUPP, [](ControlRequest& r) { r.setWord(4, 9); }},
        {"a command above all bytes", EOPNOTSUPP, [](ControlRequest& r) { r.setWord(4, 0x105); }},
        {"short", EMSGSIZE, [](ControlRequest& r) { r.messages[0].len = 163; }},
        {"long", EMSGSIZE, [](ControlRequest& r) { r.messages[0].len = 165; }},
        {"empty", EMSGSIZE, [](ControlRequest& r) { r.messages[0].len = 0; }},
        {"beyond the kernel's limit", EINVAL, [](ControlRequest& r) { r.messages[0].len = 8193; }},
        {"address", EINVAL, [](ControlRequest& r) { r.messages[0].addr = 0x50; }},
        {"a read", EINVAL, [](ControlRequest& r) { r.messages[0].flags |= I2C_M_RD; }},
        {"another flag", EINVAL, [](ControlRequest& r) { r.messages[0].flags |= I2C_M_TEN; }},
        {"no reply", EINVAL, [](ControlRequest& r) { r.messages.pop_back(); }},
        {"a third message", EINVAL, [](ControlRequest& r) { r.messages.push_back(r.messages[1]); }},
        {"short reply", EMSGSIZE, [](ControlRequest& r) { r.messages[1].len = 3; }},
        {"long reply", EMSGSIZE, [](ControlRequest& r) { r.messages[1].len = 5; }},
        {"reply's address", EINVAL, [](ControlRequest& r) { r.messages[1].addr = 1; }},
        {"reply that is written", EINVAL, [](ControlRequest& r) { r.messages[1].flags = 0; }},
        {"reply with the control flag", EINVAL,
         [](ControlRequest& r) { r.messages[1].flags |= CONTROL_FLAG; }},
        {"plain message first", EINVAL,
         [](ControlRequest& r) { std::swap(r.messages[0], r.messages[1]); }},
    };
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 8, 1), 0);
    for (const Case& spoiled : cases) {
        ControlRequest request = getProperty(0, 8);
        spoiled.spoil(request);
        EXPECT_EQ(send(request), -spoiled.error) << spoiled.what;
        EXPECT_EQ(request.reply, std::vector<std::uint8_t>(4)) << spoiled.what;
    }
    ControlRequest twice = recoverBus(96);
    twice.messages.push_back(twice.messages[0]);
    EXPECT_EQ(send(twice), -EINVAL);
}

TEST_F(BusCoreTest, theDmaSafeFlagIsIgnored) {
    ASSERT_EQ(busCoreSetProperty(core(), 5, 0, 8, 7), 0);
    ControlRequest request = getProperty(0, 8);
    request.messages[0].flags |= I2C_M_DMA_SAFE;
    request.messages[1].flags |= I2C_M_DMA_SAFE;
    EXPECT_EQ(send(request), 2);
    EXPECT_EQ(request.replyWord(0), 7);
}

TEST_F(BusCoreTest, messageCountIsLimited) {
    std::vector<i2c_msg> messages(43, i2c_msg{.addr = 0x50, .flags = 0, .len = 0, .buf = nullptr});
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 0), -EINVAL);
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 42), 42);
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 43), -EINVAL);
    EXPECT_EQ(busCoreTransfer(core(), 6, messages.data(), 1), -ENODEV);
}

class Plain : public BusCoreTest {
protected:
    int write(std::vector<std::uint8_t> bytes, std::uint16_t address = 0x50) {
        i2c_msg message{.addr = address,
                        .flags = 0,
                        .len = static_cast<std::uint16_t>(bytes.size()),
                        .buf = bytes.data()};
        return busCoreTransfer(core(), 5, &message, 1);
    }
    std::vector<std::uint8_t> read(std::uint16_t count) {
        std::vector<std::uint8_t> bytes(count);
        i2c_msg message{.addr = 0x50, .flags = I2C_M_RD, .len = count, .buf = bytes.data()};
        EXPECT_EQ(busCoreTransfer(core(), 5, &message, 1), 1);
        return bytes;
    }
};

using Bytes = std::vector<std::uint8_t>;

TEST_F(Plain, aDevicesMemoryIsReadFromItsPointerOn) {
    std::uint8_t memory[4] = {10, 11, 12, 13};
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, memory, 4, 1, false), 0);
    EXPECT_EQ(read(2), (Bytes{10, 11}));
    EXPECT_EQ(read(3), (Bytes{12, 13, 10})); // the pointer wraps
    EXPECT_EQ(write({3}), 1);
    EXPECT_EQ(read(2), (Bytes{13, 10}));
    EXPECT_EQ(write({}), 1); // writes neither pointer nor memory
    EXPECT_EQ(read(1), (Bytes{11}));
}

TEST_F(Plain, writtenBytesStayUnlessReadOnly) {
    std::uint8_t memory[4] = {10, 11, 12, 13};
    std::uint8_t fixed[2] = {20, 21};
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, memory, 4, 1, false), 0);
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x51, fixed, 2, 1, true), 0);
    EXPECT_EQ(write({3, 99, 98}), 1);
    EXPECT_EQ(Bytes(memory, memory + 4), (Bytes{98, 11, 12, 99}));
    EXPECT_EQ(write({0, 99}, 0x51), 1);
    EXPECT_EQ(fixed[0], 20);
}

TEST_F(Plain, aPointerOfTwoBytesBeginsWithTheHighOne) {
    Bytes memory(0x200);
    memory[0x102] = 7;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, memory.data(), 0x200, 2, false), 0);
    EXPECT_EQ(write({1, 2}), 1);
    EXPECT_EQ(read(1), Bytes{7});
    EXPECT_EQ(write({1, 3, 8}), 1);
    EXPECT_EQ(memory[0x103], 8);
    EXPECT_EQ(write({0xFF, 0xFF, 9}), 1); // the pointer wraps at the size
    EXPECT_EQ(memory[0x1FF], 9);
}

TEST_F(Plain, onlyTheAddressedDeviceAnswers) {
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddDeviceNode(core(), 5, 0x52, 0, ""), 0);
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    EXPECT_EQ(write({0}, 0x51), -ENXIO);
    EXPECT_EQ(write({0}, 0x52), -ENXIO); // a node without a device
    i2c_msg tenBits{.addr = 0x50, .flags = I2C_M_TEN, .len = 0, .buf = nullptr};
    EXPECT_EQ(busCoreTransfer(core(), 5, &tenBits, 1), -EOPNOTSUPP);
    i2c_msg safe{.addr = 0x50, .flags = I2C_M_RD | I2C_M_DMA_SAFE, .len = 1, .buf = &memory};
    EXPECT_EQ(busCoreTransfer(core(), 5, &safe, 1), 1);
}

class Faults : public BusCoreTest {
protected:
    void add(const BusCoreFault& fault) { ASSERT_EQ(busCoreAddFault(core(), &fault), 0); }
    void add(std::uint32_t operation, int error) { add(busFault(5, operation, error)); }
    void add(std::uint32_t operation, std::uint32_t selector, int error) {
        BusCoreFault fault = busFault(5, operation, error);
        fault.anySelector = false;
        fault.selector = selector;
        add(fault);
    }
};

TEST_F(Faults, aFaultKeepsItsBusFromOpening) {
    ASSERT_EQ(busCoreAddBus(core(), 6), 0);
    add(BUS_CORE_OPEN, EACCES);
    EXPECT_EQ(busCoreOpen(core(), 5), -EACCES);
    EXPECT_EQ(busCoreOpen(core(), 6), 0);
}

TEST_F(Faults, aFaultyCommandFailsOnItsBusAndChangesNothing) {
    ASSERT_EQ(busCoreAddBus(core(), 6), 0);
    add(CONTROL_CREATE_NODE, EIO);
    EXPECT_EQ(send(createNode(3, 0, "PUCK", "")), -EIO);
    EXPECT_EQ(core()->busCount, 2);
    EXPECT_EQ(send(createNode(3, 0, "PUCK", ""), 6), 2);
}

TEST_F(Faults, aSelectorLimitsAFaultToOneValue) {
    ASSERT_EQ(busCoreAddDeviceNode(core(), 5, 0x50, 0, ""), 0);
    for (const std::uint32_t id : {8U, 10U}) {
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0, id, id), 0);
        ASSERT_EQ(busCoreSetProperty(core(), 5, 0x50, id, id), 0);
    }
    add(CONTROL_GET_PROPERTY, 8, EREMOTEIO);
    add(CONTROL_UPDATE_PROPERTY, 10, EPERM);
    add(CONTROL_CREATE_NODE, 0x51, EBUSY);
    add(CONTROL_REMOVE_DEVICE, 0x50, EBUSY);
    add(CONTROL_RECOVER_BUS, 96, ETIMEDOUT);
    EXPECT_EQ(query(5, 0, 8, 0), -EREMOTEIO);
    EXPECT_EQ(query(5, 0x50, 8, 0), -EREMOTEIO);
    EXPECT_EQ(query(5, 0, 10, 10), 2);
    EXPECT_EQ(send(updateProperty(0, 10, 1)), -EPERM);
    EXPECT_EQ(send(updateProperty(0, 8, 1)), 1);
    EXPECT_EQ(send(createNode(3, 0x51, "PUCK", "/dev/i2c-5")), -EBUSY);
    EXPECT_EQ(send(createNode(3, 0x52, "PUCK", "/dev/i2c-5")), 2);
    EXPECT_EQ(send(removeDevice(0x50)), -EBUSY);
    EXPECT_EQ(send(removeDevice(0x52)), 1);
    EXPECT_EQ(send(recoverBus(96)), -ETIMEDOUT);
    EXPECT_EQ(send(recoverBus(97)), 1);
    EXPECT_EQ(send(recoverBus(98)), 1);
}

TEST_F(Faults, theLastMatchingFaultWins) {
    add(CONTROL_RECOVER_BUS, 97, EIO);
    add(CONTROL_RECOVER_BUS, EBUSY);
    add(CONTROL_RECOVER_BUS, 98, EPERM);
    EXPECT_EQ(send(recoverBus(96)), -EBUSY);
    EXPECT_EQ(send(recoverBus(97)), -EBUSY);
    EXPECT_EQ(send(recoverBus(98)), -EPERM);
}

TEST_F(Faults, aPlainMessageFailsByItsAddress) {
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x51, &memory, 1, 1, false), 0);
    add(BUS_CORE_PLAIN, 0x50, EAGAIN);
    i2c_msg message{.addr = 0x50, .flags = 0, .len = 0, .buf = nullptr};
    EXPECT_EQ(busCoreTransfer(core(), 5, &message, 1), -EAGAIN);
    message.addr = 0x51;
    EXPECT_EQ(busCoreTransfer(core(), 5, &message, 1), 1);
}

// A fault that lets calls pass, then applies a number of times.
BusCoreFault counted(std::uint32_t operation, int error, std::uint32_t after, std::uint32_t times) {
    BusCoreFault fault = busFault(5, operation, error);
    fault.after = after;
    fault.times = times;
    return fault;
}

TEST_F(Faults, aFaultCountsItsOperationsAndThenLetsEarlierOnesApply) {
    add(counted(CONTROL_RECOVER_BUS, EPERM, 1, 1));
    add(counted(CONTROL_RECOVER_BUS, EIO, 2, 2));
    const int expected[] = {1, -EPERM, -EIO, -EIO, 1, 1};
    for (const int result : expected) {
        EXPECT_EQ(send(recoverBus(96)), result);
    }
}

TEST_F(Faults, onlyOperationsForWhichItIsAskedCountForAFault) {
    add(counted(CONTROL_RECOVER_BUS, EPERM, 1, 0));
    add(counted(CONTROL_RECOVER_BUS, EIO, 0, 2));
    ControlRequest malformed = recoverBus(96);
    malformed.messages[0].len = 163;
    EXPECT_EQ(send(malformed), -EMSGSIZE);
    for (const int result : {-EIO, -EIO, 1, -EPERM, -EPERM}) {
        EXPECT_EQ(send(recoverBus(97)), result);
    }
}

TEST_F(Faults, aTransferCountsOnceAndFailsAtTheFirstMessageThatFits) {
    std::array<std::uint8_t, 2> memories{};
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memories[0], 1, 1, false), 0);
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x51, &memories[1], 1, 1, false), 0);
    BusCoreFault fault = counted(BUS_CORE_PLAIN, EAGAIN, 1, 1);
    fault.anySelector = false;
    fault.selector = 0x51;
    add(fault);
    std::array<std::uint8_t, 2> bytes{0, 7};
    std::array<i2c_msg, 3> messages{{{.addr = 0x50, .flags = 0, .len = 2, .buf = bytes.data()},
                                     {.addr = 0x51, .flags = 0, .len = 2, .buf = bytes.data()},
                                     {.addr = 0x51, .flags = 0, .len = 2, .buf = bytes.data()}}};
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 3), 3);
    memories = {};
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 3), -EAGAIN);
    EXPECT_EQ(memories, (std::array<std::uint8_t, 2>{7, 0}));
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 3), 3);
}

TEST_F(Faults, aLookCountsForNoFault) {
    add(counted(BUS_CORE_OPEN, ENOENT, 0, 1));
    EXPECT_EQ(busCoreLook(core(), 5), -ENOENT);
    EXPECT_EQ(busCoreLook(core(), 5), -ENOENT);
    EXPECT_EQ(busCoreOpen(core(), 5), -ENOENT);
    EXPECT_EQ(busCoreLook(core(), 5), 0);
    EXPECT_EQ(busCoreLook(core(), 6), -ENOENT);
    add(busFault(6, BUS_CORE_OPEN, EBUSY));
    EXPECT_EQ(busCoreLook(core(), 6), 0);
    add(busDelay(6, BUS_CORE_OPEN, 5)); // the bus opens slowly, but does not exist
    EXPECT_EQ(busCoreLook(core(), 6), -ENOENT);
    add(counted(BUS_CORE_OPEN, ENOENT, 1, 0));
    EXPECT_EQ(busCoreLook(core(), 5), 0);
    EXPECT_EQ(busCoreOpen(core(), 5), 0);
    EXPECT_EQ(busCoreLook(core(), 5), -ENOENT);
}

TEST_F(Faults, aDelayIsReportedWithTheResult) {
    add(busDelay(5, CONTROL_RECOVER_BUS, 250));
    BusCoreFault slowRefusal = busDelay(5, BUS_CORE_OPEN, 1000);
    slowRefusal.error = EBUSY;
    add(slowRefusal);
    EXPECT_EQ(send(recoverBus(97)), 1);
    EXPECT_EQ(core()->delay, 250U);
    EXPECT_TRUE(busCoreFindBus(core(), 5)->clockHeld);
    EXPECT_EQ(query(5, 0, 8, 0), -ENOENT);
    EXPECT_EQ(core()->delay, 0U); // of the last operation only
    EXPECT_EQ(busCoreOpen(core(), 5), -EBUSY);
    EXPECT_EQ(core()->delay, 1000U);
    EXPECT_EQ(busCoreOpen(core(), 6), -ENOENT);
    EXPECT_EQ(core()->delay, 0U);
}

TEST_F(Faults, anOperationWithoutEndIsNotPerformed) {
    add(busDelay(5, CONTROL_CREATE_NODE, BUS_CORE_FOREVER));
    add(busDelay(5, BUS_CORE_PLAIN, BUS_CORE_FOREVER));
    add(busDelay(5, BUS_CORE_OPEN, BUS_CORE_FOREVER));
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    EXPECT_LT(send(createNode(3, 0, "PUCK", "")), 0);
    EXPECT_EQ(core()->delay, BUS_CORE_FOREVER);
    EXPECT_EQ(core()->busCount, 1U);
    std::array<std::uint8_t, 2> bytes{0, 7};
    i2c_msg message{.addr = 0x50, .flags = 0, .len = 2, .buf = bytes.data()};
    EXPECT_LT(busCoreTransfer(core(), 5, &message, 1), 0);
    EXPECT_EQ(core()->delay, BUS_CORE_FOREVER);
    EXPECT_EQ(memory, 0);
    EXPECT_LT(busCoreOpen(core(), 5), 0);
    EXPECT_EQ(core()->delay, BUS_CORE_FOREVER);
}

TEST_F(Faults, aTransferThatEndsBeforeTheFaultyMessageIsNotDelayed) {
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    BusCoreFault hang = busDelay(5, BUS_CORE_PLAIN, BUS_CORE_FOREVER);
    hang.anySelector = false;
    hang.selector = 0x50;
    add(hang);
    std::array<i2c_msg, 2> messages{{{.addr = 0x33, .flags = 0, .len = 0, .buf = nullptr},
                                     {.addr = 0x50, .flags = 0, .len = 0, .buf = nullptr}}};
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 2), -ENXIO);
    EXPECT_EQ(core()->delay, 0U);
    std::swap(messages[0], messages[1]);
    EXPECT_EQ(busCoreTransfer(core(), 5, messages.data(), 2), -ETIMEDOUT);
    EXPECT_EQ(core()->delay, BUS_CORE_FOREVER);
}

TEST_F(Faults, aRecoveryEndsTheFaultsOfItsBusForGood) {
    ASSERT_EQ(busCoreAddBus(core(), 6), 0);
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    ASSERT_EQ(busCoreAddMemory(core(), 6, 0x50, &memory, 1, 1, false), 0);
    for (const std::uint32_t bus : {5U, 6U}) {
        BusCoreFault stuck = busFault(bus, BUS_CORE_PLAIN, EREMOTEIO);
        stuck.untilRecovery = true;
        add(stuck);
        BusCoreFault early = busFault(bus, CONTROL_RECOVER_BUS, EIO); // not due before the recovery
        early.untilRecovery = true;
        early.after = 3;
        add(early);
    }
    const auto read = [&](std::uint32_t bus) {
        i2c_msg message{.addr = 0x50, .flags = 0, .len = 0, .buf = nullptr};
        return busCoreTransfer(core(), bus, &message, 1);
    };
    EXPECT_EQ(read(5), -EREMOTEIO);
    EXPECT_EQ(send(recoverBus(96)), 1);
    EXPECT_EQ(read(5), -EREMOTEIO);
    EXPECT_EQ(send(recoverBus(97)), 1);
    EXPECT_EQ(read(5), -ETIMEDOUT); // the clock is held
    EXPECT_EQ(send(recoverBus(98)), 1);
    EXPECT_EQ(read(5), 1);
    EXPECT_EQ(read(6), -EREMOTEIO); // another bus
    EXPECT_EQ(send(recoverBus(96)), 1);
    EXPECT_EQ(read(5), 1);
}

TEST_F(Faults, aRecoveryThatFailsEndsNoFault) {
    std::uint8_t memory = 0;
    ASSERT_EQ(busCoreAddMemory(core(), 5, 0x50, &memory, 1, 1, false), 0);
    BusCoreFault stuck = busFault(5, BUS_CORE_PLAIN, EREMOTEIO);
    stuck.untilRecovery = true;
    add(stuck);
    add(counted(CONTROL_RECOVER_BUS, EIO, 0, 1));
    i2c_msg message{.addr = 0x50, .flags = 0, .len = 0, .buf = nullptr};
    EXPECT_EQ(send(recoverBus(98)), -EIO);
    EXPECT_EQ(busCoreTransfer(core(), 5, &message, 1), -EREMOTEIO);
    EXPECT_EQ(send(recoverBus(98)), 1);
    EXPECT_EQ(busCoreTransfer(core(), 5, &message, 1), 1);
}

TEST_F(Faults, aMalformedRequestKeepsItsOwnError) {
    add(CONTROL_RECOVER_BUS, EIO);
    ControlRequest request = recoverBus(96);
    request.messages[0].len = 163;
    EXPECT_EQ(send(request), -EMSGSIZE);
}

} // namespace
} // namespace standin
