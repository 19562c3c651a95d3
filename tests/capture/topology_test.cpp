#include "capture/topology.h"

#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace capture {
namespace {

using zolt::test::platform;

template <std::size_t Size>
void setName(char (&field)[Size], std::string_view name) {
    std::ranges::copy(name.substr(0, Size), field);
}

class Topology : public testing::Test {
protected:
    Topology() { zolt::test::resetPlatform(); }

    void publish(int type, const IndexNodeInfo* nodes, std::int32_t status = 0) {
        tree_.indexNodes = nodes;
        platform().sysinfo[type] = {.status = status, .root = &tree_};
    }

    static Observation read() {
        Observation observation;
        readTopology(observation, noProgress);
        return observation;
    }

private:
    SysInfoTree tree_;
};

TEST_F(Topology, allDeviceTypesAreParsedAndHandedBackOneByOne) {
    IndexNodeInfo node;
    publish(1, &node);
    const Observation observation = read();
    const auto& calls = platform().calls;
    ASSERT_EQ(calls.size(), 2U * 165);
    EXPECT_EQ(calls[0], "i2c_parse_sysinfo 0");
    EXPECT_EQ(calls[1], "free_sysinfo null");
    EXPECT_EQ(calls[2], "i2c_parse_sysinfo 1");
    EXPECT_EQ(calls[3], "free_sysinfo 1");
    EXPECT_EQ(calls[328], "i2c_parse_sysinfo 164");
    ASSERT_EQ(observation.topology.size(), 165U);
    EXPECT_EQ(observation.topology[0].status, -1);
    EXPECT_FALSE(observation.topology[0].hasRoot);
    EXPECT_EQ(observation.topology[1].status, 0);
    EXPECT_TRUE(observation.topology[1].hasRoot);
    EXPECT_EQ(observation.topology[1].nodes.size(), 1U);
}

TEST_F(Topology, everyFieldOfARecordIsCopied) {
    SubIndexNodeInfo second{.discoverable = 1, .subIndex = -5, .subNodeCount = 6};
    setName(second.name, "exactly24charactersofname");
    SubIndexNodeInfo first{.discoverable = 2, .subIndex = 3, .subNodeCount = 4, .next = &second};
    setName(first.name, "a");
    IndexNodeInfo node{.discoverable = 1,
                       .picpwrId = 2,
                       .isSlSrc = 3,
                       .slSrc = 4,
                       .hwUid = 0x1234,
                       .index = -6,
                       .slotNumber = 7,
                       .slotType = 8,
                       .physicalBus = 9,
                       .subNodeCount = 99,
                       .subNodes = &first,
                       .bayId = 11};
    setName(node.name, "exactly16bytes!!"); // fills the field, without a NUL
    publish(164, &node);
    const Observation observation = read();
    const TopologyReading& reading = observation.topology.at(164);
    ASSERT_EQ(reading.nodes.size(), 1U);
    const board::IndexNode& copy = reading.nodes[0];
    EXPECT_EQ(copy.deviceType, 164);
    EXPECT_EQ(copy.discoverable, 1);
    EXPECT_EQ(copy.picpwrId, 2);
    EXPECT_EQ(copy.isSlSrc, 3);
    EXPECT_EQ(copy.slSrc, 4);
    EXPECT_EQ(copy.hwUid, 0x1234);
    EXPECT_EQ(copy.index, -6);
    EXPECT_EQ(copy.slotNumber, 7);
    EXPECT_EQ(copy.slotType, 8);
    EXPECT_EQ(copy.physicalBus, 9);
    EXPECT_EQ(copy.subNodeCount, 99);
    EXPECT_EQ(copy.bayId, 11);
    EXPECT_EQ(copy.name, "exactly16bytes!!");
    EXPECT_EQ(copy.parent, std::nullopt);
    ASSERT_EQ(copy.subNodes.size(), 2U);
    EXPECT_EQ(copy.subNodes[0].discoverable, 2);
    EXPECT_EQ(copy.subNodes[0].subIndex, 3);
    EXPECT_EQ(copy.subNodes[0].subNodeCount, 4);
    EXPECT_EQ(copy.subNodes[0].name, "a");
    EXPECT_EQ(copy.subNodes[1].subIndex, -5);
    EXPECT_EQ(copy.subNodes[1].name, "exactly24charactersofnam");
    EXPECT_FALSE(reading.isCut);
}

TEST_F(Topology, aTreeWithAStatusIsHandedBackUnread) {
    IndexNodeInfo node;
    publish(5, &node, -7);
    const Observation observation = read();
    EXPECT_EQ(observation.topology[5].status, -7);
    EXPECT_TRUE(observation.topology[5].hasRoot);
    EXPECT_TRUE(observation.topology[5].nodes.empty());
    EXPECT_EQ(platform().calls[11], "free_sysinfo 5");
}

TEST_F(Topology, aTreeWithoutNodesHasARoot) {
    publish(5, nullptr);
    EXPECT_TRUE(read().topology[5].hasRoot);
}

TEST_F(Topology, aCircleOfIndexNodesEnds) {
    std::vector<IndexNodeInfo> nodes(3);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].index = static_cast<std::int32_t>(i);
        nodes[i].next = &nodes[(i + 1) % nodes.size()];
    }
    nodes[2].next = &nodes[1];
    publish(0, nodes.data());
    const TopologyReading reading = read().topology[0];
    EXPECT_EQ(reading.nodes.size(), 3U);
    EXPECT_TRUE(reading.isCut);
}

TEST_F(Topology, aCircleOfSubNodesEndsAndTheNextIndexNodeFollows) {
    SubIndexNodeInfo sub;
    sub.next = &sub;
    IndexNodeInfo second{.index = 2};
    IndexNodeInfo first{.index = 1, .subNodes = &sub, .next = &second};
    publish(0, &first);
    const TopologyReading reading = read().topology[0];
    ASSERT_EQ(reading.nodes.size(), 2U);
    EXPECT_EQ(reading.nodes[0].subNodes.size(), 1U);
    EXPECT_TRUE(reading.isCut);
}

TEST_F(Topology, indexNodesMayShareTheirSubNodes) {
    SubIndexNodeInfo sub;
    IndexNodeInfo second{.subNodes = &sub};
    IndexNodeInfo first{.subNodes = &sub, .next = &second};
    publish(0, &first);
    const TopologyReading reading = read().topology[0];
    EXPECT_EQ(reading.nodes.at(1).subNodes.size(), 1U);
    EXPECT_FALSE(reading.isCut);
}

TEST_F(Topology, longListsAreCut) {
    std::vector<IndexNodeInfo> nodes(mostNodesOfType + 1);
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        nodes[i - 1].next = &nodes[i];
    }
    SysInfoTree tree{.indexNodes = nodes.data()};
    for (int type = 0; type < 6; ++type) {
        platform().sysinfo[type] = {.root = &tree};
    }
    const Observation observation = read();
    std::size_t kept = 0;
    for (std::size_t type = 0; type < 6; ++type) {
        EXPECT_LE(observation.topology[type].nodes.size(), mostNodesOfType);
        EXPECT_TRUE(observation.topology[type].isCut) << type;
        kept += observation.topology[type].nodes.size();
    }
    EXPECT_EQ(kept, mostNodes);
}

} // namespace
} // namespace capture
