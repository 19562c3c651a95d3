#include "capture/node_properties.h"

#include "tests/support/bus_devices.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

namespace capture {
namespace {

using zolt::test::busDevices;

class NodeProperties : public testing::Test {
protected:
    NodeProperties() { zolt::test::resetBusDevices(); }

    Observation read(std::vector<NodeProperty> properties) {
        Observation observation;
        printed_ =
            zolt::test::outputOf([&] { readNodeProperties(properties, observation, noProgress); });
        return observation;
    }

    std::string printed_;
};

TEST_F(NodeProperties, aPropertyIsOneControlTransaction) {
    busDevices().answers = {{.reply = {0x78, 0x56, 0x34, 0x12}}};
    const Observation observation = read({{.bus = 20, .target = 0x50, .id = 7}});
    EXPECT_EQ(
        busDevices().calls,
        (std::vector<std::string>{"open /dev/i2c-20 O_RDWR",
                                  "ioctl 0x0707: [0x0000 0x0080 164] [0x0000 0x0001 4]", "close"}));
    EXPECT_EQ(busDevices().records.at(0),
              zolt::test::controlRecord({{0, "54 45 53 4B"}, {4, "05"}, {8, "50"}, {12, "07"}}));
    ASSERT_EQ(observation.nodeProperties.size(), 1U);
    const NodePropertyReading& reading = observation.nodeProperties[0];
    EXPECT_EQ(reading.bus, 20U);
    EXPECT_EQ(reading.target, 0x50U);
    EXPECT_EQ(reading.id, 7U);
    EXPECT_TRUE(reading.opened);
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.value, 0x12345678U);
    EXPECT_EQ(printed_, "");
}

TEST_F(NodeProperties, aRefusalKeepsItsError) {
    busDevices().answers = {{.error = EACCES}, {.reply = {1, 0, 0, 0}}};
    const Observation observation = read({{.bus = 1, .id = 2}, {.bus = 1, .id = 3}});
    ASSERT_EQ(observation.nodeProperties.size(), 2U);
    EXPECT_TRUE(observation.nodeProperties[0].opened);
    EXPECT_EQ(observation.nodeProperties[0].error, EACCES);
    EXPECT_EQ(observation.nodeProperties[1].error, 0);
    EXPECT_EQ(observation.nodeProperties[1].value, 1U);
    EXPECT_EQ(printed_, "");
    EXPECT_EQ(zolt::test::openBusDevices(), 0U);
}

TEST_F(NodeProperties, aBusThatCannotBeOpenedKeepsItsError) {
    busDevices().openErrors["/dev/i2c-3"] = EBUSY;
    const Observation observation = read({{.bus = 3}});
    EXPECT_FALSE(observation.nodeProperties.at(0).opened);
    EXPECT_EQ(observation.nodeProperties.at(0).error, EBUSY);
    EXPECT_EQ(printed_, "");
}

// 0xFFFFFFFF is a value like any other: the driver has answered.
TEST_F(NodeProperties, everyValueIsAnAnswer) {
    busDevices().answers = {{.reply = {0xFF, 0xFF, 0xFF, 0xFF}}};
    const Observation observation = read({{.bus = 3}});
    EXPECT_EQ(observation.nodeProperties.at(0).error, 0);
    EXPECT_EQ(observation.nodeProperties.at(0).value, 0xFFFFFFFF);
}

} // namespace
} // namespace capture
