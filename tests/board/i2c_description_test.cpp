#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

I2cDescription read(const std::string& description) {
    return test::boardOf(description, "b").i2c;
}

TEST(I2cDescription, boardWithoutOneHasNoBusAndNoType) {
    const I2cDescription i2c = read("");
    EXPECT_TRUE(i2c.buses.empty());
    EXPECT_TRUE(i2c.indexNodes.empty());
    EXPECT_TRUE(i2c.answers.empty());
}

TEST(I2cDescription, readsBusesAndDevices) {
    const I2cDescription i2c = read(R"(
[[i2c.bus]]
number = 1048575
properties = { 8 = 0x11, 0xA = 4294967295 }
[[i2c.bus.device]]
address = 0x50
memory = "01 02"
size = 4
fill = 9
read_only = true
[[i2c.bus.device]]
address = 127
memory = [1]
size = 257
[[i2c.bus.device]]
address = 1
size = 2
pointer_width = 2
node_type = "PUCK"
node_index = 4294967295
[[i2c.bus.device]]
address = 2
node_type = 164
properties = { 0 = 0 }
[[i2c.bus]]
number = 0
)");
    ASSERT_EQ(i2c.buses.size(), 2U);
    EXPECT_EQ(i2c.buses[1].number, 0U);
    const I2cBus& bus = i2c.buses[0];
    EXPECT_EQ(bus.number, 1048575U);
    EXPECT_EQ(bus.properties, (I2cProperties{{8, 0x11}, {10, 0xFFFFFFFF}}));
    ASSERT_EQ(bus.devices.size(), 4U);
    EXPECT_EQ(bus.devices[0].address, 0x50U);
    EXPECT_EQ(bus.devices[0].memory, (Bytes{1, 2, 9, 9}));
    EXPECT_EQ(bus.devices[0].pointerWidth, 1U);
    EXPECT_TRUE(bus.devices[0].readOnly);
    EXPECT_FALSE(bus.devices[0].node);
    EXPECT_EQ(bus.devices[1].memory.size(), 257U);
    EXPECT_EQ(bus.devices[1].memory.back(), 0xFF);
    EXPECT_EQ(bus.devices[1].pointerWidth, 2U);
    EXPECT_FALSE(bus.devices[1].readOnly);
    EXPECT_EQ(bus.devices[2].pointerWidth, 2U);
    ASSERT_TRUE(bus.devices[2].node);
    EXPECT_EQ(bus.devices[2].node->deviceType, 24);
    EXPECT_EQ(bus.devices[2].node->index, 0xFFFFFFFF);
    ASSERT_TRUE(bus.devices[3].node);
    EXPECT_EQ(bus.devices[3].node->deviceType, 164);
    EXPECT_TRUE(bus.devices[3].memory.empty());
    EXPECT_EQ(bus.devices[3].properties, (I2cProperties{{0, 0}}));
}

TEST(I2cDescription, readsIndexNodes) {
    const I2cDescription i2c = read(R"(
[[i2c.index_node]]
device_type = "FTULM_FRU"
index = -2147483648
name = "sixteen letters!"
discoverable = 2
picpwr = 255
is_sl_src = true
sl_src = 3
hw_uid = 0xFFFF
slot_number = 2147483647
slot_type = -1
physical_bus = 7
sub_node_count = 9
bay_id = 4
[[i2c.index_node.sub]]
discoverable = true
sub_index = -1
sub_node_count = 5
name = "twenty-four letters, all"
[[i2c.index_node]]
device_type = 0
physical_bus = 8
parent = 7
)");
    ASSERT_EQ(i2c.indexNodes.size(), 2U);
    const IndexNode& node = i2c.indexNodes[0];
    EXPECT_EQ(node.deviceType, 68);
    EXPECT_EQ(node.index, INT32_MIN);
    EXPECT_EQ(node.name, "sixteen letters!");
    EXPECT_EQ(node.discoverable, 2);
    EXPECT_EQ(node.picpwrId, 255);
    EXPECT_EQ(node.isSlSrc, 1);
    EXPECT_EQ(node.slSrc, 3);
    EXPECT_EQ(node.hwUid, 0xFFFF);
    EXPECT_EQ(node.slotNumber, INT32_MAX);
    EXPECT_EQ(node.slotType, -1);
    EXPECT_EQ(node.physicalBus, 7);
    EXPECT_EQ(node.subNodeCount, 9);
    EXPECT_EQ(node.bayId, 4);
    EXPECT_EQ(node.parent, std::nullopt);
    ASSERT_EQ(node.subNodes.size(), 1U);
    EXPECT_EQ(node.subNodes[0].discoverable, 1);
    EXPECT_EQ(node.subNodes[0].subIndex, -1);
    EXPECT_EQ(node.subNodes[0].subNodeCount, 5);
    EXPECT_EQ(node.subNodes[0].name, "twenty-four letters, all");
    EXPECT_EQ(i2c.indexNodes[1].physicalBus, 8);
    EXPECT_EQ(i2c.indexNodes[1].parent, 7U);
    EXPECT_EQ(i2c.indexNodes[1].subNodeCount, std::nullopt);
}

TEST(I2cDescription, keepsNamesAndBusesThatNoSystemHas) {
    const I2cDescription i2c = read(R"(
[[i2c.index_node]]
device_type = 1
name = [0xFF, 0x41]
physical_bus = -7
[[i2c.index_node.sub]]
name = []
[[i2c.index_node]]
device_type = 1
physical_bus = 1048575
[[i2c.index_node]]
device_type = 1
physical_bus = 1048576
)");
    EXPECT_EQ(i2c.indexNodes.at(0).name, "\xFF\x41");
    EXPECT_EQ(i2c.indexNodes[0].subNodes.at(0).name, "");
    EXPECT_FALSE(i2c.indexNodes[0].hasBus());
    EXPECT_TRUE(i2c.indexNodes.at(1).hasBus());
    EXPECT_EQ(i2c.indexNodes.at(2).physicalBus, 1048576);
    EXPECT_FALSE(i2c.indexNodes[2].hasBus());
}

TEST(I2cDescription, readsTheAnswersOfTypes) {
    using enum TypeAnswer::Root;
    I2cDescription i2c = read(R"(
[[i2c.type]]
device_type = 1
[[i2c.type]]
device_type = 2
status = -7
[[i2c.type]]
device_type = 3
status = 7
root = "nodes"
[[i2c.type]]
device_type = 4
root = "none"
[[i2c.type]]
device_type = 5
root = "empty"
)");
    const std::pair<std::int32_t, TypeAnswer::Root> expected[] = {
        {0, nodes}, {-7, none}, {7, nodes}, {0, none}, {0, empty}};
    ASSERT_EQ(i2c.answers.size(), std::size(expected));
    std::uint8_t type = 0;
    for (const auto& [status, root] : expected) {
        ++type;
        EXPECT_EQ(i2c.answers[type].status, status) << int{type};
        EXPECT_EQ(i2c.answers[type].root, root) << int{type};
    }
}

// Repeats a table. A '#' in it stands for the number of the repetition.
std::string numbered(const std::string& table, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        std::string each = table;
        for (std::size_t at = 0; (at = each.find('#', at)) != std::string::npos;) {
            each.replace(at, 1, std::to_string(i));
        }
        all += each;
    }
    return all;
}

TEST(I2cDescription, fillsTheBusDriver) {
    const std::string buses = numbered("[[i2c.bus]]\nnumber = #\n", 255);
    // The bus of the second index node is a bus already.
    const std::string nodes =
        numbered("[[i2c.index_node]]\ndevice_type = 1\nphysical_bus = 255\n", 2);
    EXPECT_NO_THROW((void)read(buses + nodes));
    std::string devices = "[[i2c.bus]]\nnumber = 1\n";
    for (int bus = 2; bus < 10; ++bus) { // 8 * 127 devices
        for (int address = 1; address < 128; ++address) {
            devices += "[[i2c.bus.device]]\nsize = 1\naddress = " + std::to_string(address) + "\n";
        }
        devices += "[[i2c.bus]]\nnumber = " + std::to_string(bus) + "\n";
    }
    devices += numbered("[[i2c.bus.device]]\nsize = 1\naddress = 10#\n", 8);
    EXPECT_NO_THROW((void)read(devices));
    const std::string properties = "[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\n"
                                   "size = 1\n[i2c.bus.device.properties]\n" +
                                   numbered("# = 1\n", 4095) +
                                   "[[i2c.bus]]\nnumber = 2\n[i2c.bus.properties]\n0 = 1\n";
    EXPECT_NO_THROW((void)read(properties));
    const std::pair<std::string, const char*> cases[] = {
        {buses + "[[i2c.bus]]\nnumber = 256\n[[i2c.bus]]\nnumber = 257\n",
         "b:514: i2c: the bus driver has room for 256 buses"},
        {buses + nodes + "[[i2c.index_node]]\ndevice_type = 1\nphysical_bus = 256\n",
         "b:519: i2c: the bus driver has room for 256 buses"},
        {devices + "[[i2c.bus.device]]\nsize = 1\naddress = 1\n",
         "b:3091: i2c: the bus driver has room for 1024 devices"},
        {properties + "1 = 1\n", "b:4106: i2c: the bus driver has room for 4096 properties"},
    };
    for (const auto& [description, reason] : cases) {
        EXPECT_EQ(test::refusalOf(description, "b"), reason);
    }
}

TEST(I2cDescription, refusesWithFileLineAndReason) {
    const std::string bus = "[[i2c.bus]]\nnumber = 1\n";
    const std::string device = bus + "[[i2c.bus.device]]\n";
    const std::string node = "[[i2c.index_node]]\ndevice_type = 1\n";
    const std::pair<std::string, const char*> cases[] = {
        {"[i2c]\nbuss = []\n", "b:2: i2c: 'buss' is not a key here; did you mean 'bus'?"},
        {"[[i2c.bus]]\n", "b:1: bus: 'number' is missing"},
        {"[[i2c.bus]]\nnumber = 1048576\n",
         "b:2: bus: 'number' must be a whole number from 0 to 1048575"},
        {bus + bus, "b:4: bus: 1 is described already, at line 2"},
        {bus + "properties = { x = 1 }\n",
         "b:3: properties: 'x' is no property number (0 to 4294967295)"},
        {bus + "[i2c.bus.properties]\n8 = 1\n0x8 = 1\n",
         "b:5: property: 8 is described already, at line 4"},
        {bus + "properties = { 1 = -1 }\n",
         "b:3: properties: '1' must be a whole number from 0 to 4294967295"},
        {device, "b:3: device: 'address' is missing"},
        {device + "address = 0\n", "b:4: device: 'address' must be a whole number from 1 to 127"},
        {device + "address = 128\n", "b:4: device: 'address' must be a whole number from 1 to 127"},
        {device + "address = 1\n", "b:3: device: needs 'memory', 'size' or 'node_type'"},
        {device + "address = 1\nmemory = [1, 2]\nsize = 1\n",
         "b:6: device: 'memory' has 2 bytes, more than 'size'"},
        {device + "address = 1\nsize = 257\npointer_width = 1\n",
         "b:5: device: a 'pointer_width' of 1 does not reach 257 bytes"},
        {device + "address = 1\nsize = 65537\n",
         "b:5: device: 'size' must be a whole number from 0 to 65536"},
        {device + "address = 1\nnode_type = \"Plane\"\n", "b:5: 'Plane' is no device type"},
        {device + "address = 1\nnode_type = \"PUK\"\n",
         "b:5: 'PUK' is no device type; did you mean 'PUCK'?"},
        {device + "address = 1\nnode_type = \"\"\n", "b:5: '' is no device type"},
        {device + "address = 1\nsize = 1\n[[i2c.bus.device]]\naddress = 1\nsize = 1\n",
         "b:7: device: 1 is described already, at line 4"},
        {"[[i2c.index_node]]\n", "b:1: 'device_type' is missing"},
        {"[[i2c.index_node]]\ndevice_type = 165\n",
         "b:2: index_node: 'device_type' must be a whole number from 0 to 164"},
        {node + "name = \"seventeen letters\"\n", "b:3: 'name' has 17 characters, at most 16 fit"},
        {node + "[[i2c.index_node.sub]]\nname = \"twenty-five letters in it\"\n",
         "b:4: 'name' has 25 characters, at most 24 fit"},
        {node + "hw_uid = 65536\n",
         "b:3: index_node: 'hw_uid' must be a whole number from 0 to 65535"},
        {node + "discoverable = 256\n",
         "b:3: index_node: 'discoverable' must be a whole number from 0 to 255"},
        {node + "physical_bus = -2147483649\n",
         "b:3: index_node: 'physical_bus' must be a whole number from -2147483648 to 2147483647"},
        {node + "name = [256]\n", "b:3: index_node: 'name' must be a whole number from 0 to 255"},
        {node + "physical_bus = -2\nparent = 1\n",
         "b:1: index_node: a node with 'parent' needs 'physical_bus'"},
        {node + "parent = 1\n", "b:1: index_node: a node with 'parent' needs 'physical_bus'"},
        {node + "physical_bus = 2\nparent = 1\n",
         "b:4: index_node: 'parent' must be a bus that is described before it"},
        {bus + node + "physical_bus = 2\n" + node + "physical_bus = 2\nparent = 1\n",
         "b:8: index_node: another node has this bus already"},
        {"[[i2c.type]]\ndevice_type = 1\nroot = \"tree\"\n",
         "b:3: type: 'root' must be none, empty or nodes"},
        {"[[i2c.type]]\ndevice_type = 1\n[[i2c.type]]\ndevice_type = \"KARN\"\n",
         "b:4: type: 1 is described already, at line 2"},
    };
    for (const auto& [description, reason] : cases) {
        EXPECT_EQ(test::refusalOf(description, "b"), reason) << description;
    }
}

} // namespace
} // namespace board
