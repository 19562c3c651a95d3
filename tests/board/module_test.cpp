#include "board/module.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

// Returns the only slot of a board. Its module has these keys, the first of them in line 4.
Slot slotWith(const std::string& module) {
    return test::boardOf("[[slot]]\nid = 1\n[slot.module]\n" + module, "b.toml").slots.at(0);
}

TEST(Module, withoutKeysIsAHeaderWithLengthAndChecksum) {
    const Slot slot = slotWith("");
    EXPECT_EQ(slot.payload, (Bytes{0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFE}));
    EXPECT_EQ(slot.oemArea, Bytes{});
    EXPECT_EQ(slot.moduleType, "");
    EXPECT_EQ(slot.objectName, "");
}

TEST(Module, headerHasEveryFieldInItsPlace) {
    const Slot slot = slotWith(R"(
format_version = 2
device_class = 0x1A
device_id = 0x1234
vendor_id = 0xABCD
device_version = 7
xwires = 10
pwires = 5
target_type = 6
target_address = 0x55
)");
    EXPECT_EQ(slot.payload, (Bytes{0x02, 0x1A, 0x02, 0x00, 0x12, 0x34, 0xAB, 0xCD, //
                                   0x07, 0x00, 0xA5, 0xC0, 0x55, 0x00, 0x00, 0x63}));
}

TEST(Module, backplaneIsDescribedBehindItsHeader) {
    const Slot slot = slotWith(R"(
format_version = 1
device_class = 0x2A
device_id = 1
vendor_id = 2
[slot.module.backplane]
descriptor_version = 3
bay_id = 4
backplane_id = 0x2C5
power_cables = 2
starting_slot_offset = 9
location = 5
last_connector = 11
max_pcie_speed = 3
last_slot = 0x2A
type = 2
last_switch_port = 6
)");
    EXPECT_EQ(slot.payload, (Bytes{0x01, 0x2A, 0x03, 0x00, 0x00, 0x01, 0x00, 0x02, //
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x03, 0x04, 0xC5, //
                                   0xA6, 0x5B, 0xEA, 0x16, 0x00, 0x00, 0x00, 0x02}));
}

TEST(Module, backplaneWithoutADescriptionHasRoomForIt) {
    EXPECT_EQ(
        slotWith("device_class = 0x2A").payload,
        (Bytes{0, 0x2A, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xD3}));
}

TEST(Module, endPointsAreDirectOrIndirect) {
    const Slot slot = slotWith(R"(
format_version = 1
device_class = 0x11
target_type = 2
target_address = 0x7F
[[slot.module.end_point]]
picpwr_index = 9
i2c_mux_present = true
hot_plug = true
type = 5
i2c_source = 12
lane_width = 3
i2c_mux_channel = 7
usb_hub_present = true
usb_hub_channel = 6
usb_source = 13
dsl_index_lower = 5
dsl_lane_offset_lower = 2
dsl_index_upper = 7
dsl_lane_offset_upper = 4
[[slot.module.end_point]]
picpwr_index = 15
indirect = true
type = 1
i2c_source = 2
lane_width = 7
i2c_mux_channel = 15
pcie_order_lower = 14
pcie_group_lower = 5
pcie_order_upper = 3
pcie_group_upper = 6
)");
    EXPECT_EQ(slot.payload, (Bytes{0x01, 0x11, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, //
                                   0x00, 0x00, 0x00, 0x42, 0x7F,                   //
                                   0x9B, 0xAC, 0x67, 0x6D, 0x52, 0x74,             //
                                   0xF4, 0x22, 0xEF, 0xE5, 0x36, 0x00,             //
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x28}));
}

TEST(Module, payloadIsAsLongAsItsEndPointsTake) {
    const std::pair<int, std::size_t> sizes[] = {{0, 16}, {1, 24}, {2, 32}, {3, 32}, {31, 200}};
    for (const auto& [count, size] : sizes) {
        const Bytes payload =
            slotWith(test::repeated("[[slot.module.end_point]]\n", count)).payload;
        ASSERT_EQ(payload.size(), size) << count;
        EXPECT_EQ(payload[2], size / 8) << count;
        EXPECT_EQ(payload[11], count);
        EXPECT_EQ(checksumOf(payload), 0) << count;
    }
}

TEST(Module, lengthCountAndChecksumMayBeWrong) {
    EXPECT_EQ(slotWith("static_payload_size = 255\nnum_end_points = 31\nchecksum = 0x77").payload,
              (Bytes{0, 0, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0x1F, 0, 0, 0, 0x77}));
    // The checksum fits the bytes of the payload, the wrong length among them.
    EXPECT_EQ(slotWith("static_payload_size = 0\ndevice_class = 0x1B").payload,
              (Bytes{0, 0x1B, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE5}));
}

TEST(Module, oemAreaHasADescriptorOfEachType) {
    const Slot slot = slotWith(R"(
[[slot.module.oem]]
type = 1
src_id = 0x11
dst_id = 0x22
[[slot.module.oem]]
type = 2
bay_id = 3
starting_slot_offset = 4
location = 5
[[slot.module.oem]]
type = 3
slot_presence = 0xF0
[[slot.module.oem]]
type = 9
data = "AA BB"
)");
    EXPECT_EQ(slot.oemArea, (Bytes{0x13, 0x04,                   //
                                   0x01, 0x04, 0x11, 0x22,       //
                                   0x02, 0x05, 0x03, 0x04, 0x05, //
                                   0x03, 0x03, 0xF0,             //
                                   0x09, 0x04, 0xAA, 0xBB,       //
                                   0x36}));
}

TEST(Module, oemAreasSizeCountAndChecksumMayBeWrong) {
    EXPECT_EQ(slotWith("oem_descriptors = 0").oemArea, (Bytes{3, 0, 0xFD}));
    EXPECT_EQ(slotWith("oem_area_size = 0").oemArea, (Bytes{0, 0, 0}));
    EXPECT_EQ(slotWith("oem_area_size = 255\noem_descriptors = 200\noem_checksum = 9\n"
                       "[[slot.module.oem]]\ntype = 0\nsize = 0")
                  .oemArea,
              (Bytes{255, 200, 0, 0, 9}));
}

TEST(Module, longestOemAreaIsAccepted) {
    // 2 bytes in front of the descriptor, 2 of its own, 250 of data, and the checksum.
    const Bytes area =
        slotWith("[[slot.module.oem]]\ntype = 4\ndata = '" + test::repeated("00 ", 250) + "'")
            .oemArea;
    ASSERT_EQ(area.size(), 255U);
    EXPECT_EQ(area[0], 255);
    EXPECT_EQ(area[3], 252);
}

TEST(Module, givesItsClassAndItsObjectToTheSlot) {
    const Slot slot = slotWith("device_class = 0x11\ntype = 'riser'\nobject = 'riser_1'");
    EXPECT_EQ(slot.moduleClass, 0x11);
    EXPECT_EQ(slot.moduleType, "riser");
    EXPECT_EQ(slot.objectName, "riser_1");
    const auto lying = test::boardOf("[[slot]]\nid = 1\nmodule_class = 3\n"
                                     "[slot.module]\ndevice_class = 0x11",
                                     "b.toml");
    EXPECT_EQ(lying.slots[0].moduleClass, 3);
}

TEST(Module, everyTypeOfTheServiceIsAccepted) {
    for (const char* const type : {"bp", "puck", "rfc", "riser", "ftulm", "karnRaid", "karnNonRaid",
                                   "rida", "flop", "bi", "battery"}) {
        EXPECT_EQ(slotWith("type = '" + std::string(type) + "'\nobject = 'x'").moduleType, type);
    }
}

TEST(Module, payloadsLieOneBehindTheOtherWithTheirOemAreas) {
    const Board board = test::boardOf("[[slot]]\nid = 1\n[slot.module]\noem_descriptors = 0\n"
                                      "[[slot]]\nid = 2\n[slot.module]\ndevice_class = 1\n"
                                      "[[slot]]\nid = 3\npayload = [1]\noem_area = [2, 3]\n"
                                      "[[slot]]\nid = 4\noem_area = [4]\n",
                                      "b");
    std::vector<int> offsets;
    for (const Slot& slot : board.slots) {
        offsets.push_back(slot.payloadOffset);
    }
    EXPECT_EQ(offsets, (std::vector{0, 20, 37, 41}));
}

TEST(Module, refusesWithFileLineAndReason) {
    const std::pair<std::string, const char*> cases[] = {
        {"format_version = 256",
         "b.toml:4: module: 'format_version' must be a whole number from 0 to 255"},
        {"device_class = 256",
         "b.toml:4: module: 'device_class' must be a whole number from 0 to 255"},
        {"device_id = 65536",
         "b.toml:4: module: 'device_id' must be a whole number from 0 to 65535"},
        {"vendor_id = -1", "b.toml:4: module: 'vendor_id' must be a whole number from 0 to 65535"},
        {"device_version = 256",
         "b.toml:4: module: 'device_version' must be a whole number from 0 to 255"},
        {"xwires = 16", "b.toml:4: module: 'xwires' must be a whole number from 0 to 15"},
        {"pwires = 8", "b.toml:4: module: 'pwires' must be a whole number from 0 to 7"},
        {"target_type = 8", "b.toml:4: module: 'target_type' must be a whole number from 0 to 7"},
        {"target_address = 128",
         "b.toml:4: module: 'target_address' must be a whole number from 0 to 127"},
        {"static_payload_size = 256",
         "b.toml:4: module: 'static_payload_size' must be a whole number from 0 to 255"},
        {"num_end_points = 32",
         "b.toml:4: module: 'num_end_points' must be a whole number from 0 to 31"},
        {"checksum = 256", "b.toml:4: module: 'checksum' must be a whole number from 0 to 255"},
        // keys that the class does not have
        {"device_class = 0x1A\n[[slot.module.end_point]]",
         "b.toml:5: module: 'end_point' is a key only where 'device_class' is not 0x1A, 0x1B or "
         "0x2A"},
        {"device_class = 0x2A\n[[slot.module.end_point]]",
         "b.toml:5: module: 'end_point' is a key only where 'device_class' is not 0x1A, 0x1B or "
         "0x2A"},
        {"device_class = 0x1A\n[slot.module.backplane]",
         "b.toml:5: module: 'backplane' is a key only where 'device_class' is 0x2A"},
        {"device_class = 0x11\n[slot.module.backplane]",
         "b.toml:5: module: 'backplane' is a key only where 'device_class' is 0x2A"},
        // a backplane's fields
        {"device_class = 0x2A\nbackplane = 7",
         "b.toml:5: module: 'backplane' must be a table, [backplane]"},
        {"device_class = 0x2A\n[slot.module.backplane]\nbackplane_id = 1024",
         "b.toml:6: backplane: 'backplane_id' must be a whole number from 0 to 1023"},
        {"device_class = 0x2A\n[slot.module.backplane]\nlast_slot = 64",
         "b.toml:6: backplane: 'last_slot' must be a whole number from 0 to 63"},
        {"device_class = 0x2A\n[slot.module.backplane]\nbay = 1",
         "b.toml:6: backplane: 'bay' is not a key here"},
        // end points
        {"end_point = 7",
         "b.toml:4: module: 'end_point' must be an array of tables, [[end_point]]"},
        {"[[slot.module.end_point]]\nhot_plug = 1",
         "b.toml:5: end_point: 'hot_plug' must be true or false"},
        {"[[slot.module.end_point]]\npicpwr_index = 16",
         "b.toml:5: end_point: 'picpwr_index' must be a whole number from 0 to 15"},
        {"[[slot.module.end_point]]\nusb_source = 16",
         "b.toml:5: end_point: 'usb_source' must be a whole number from 0 to 15"},
        {"[[slot.module.end_point]]\nindirect = true\npcie_group_lower = 8",
         "b.toml:6: end_point: 'pcie_group_lower' must be a whole number from 0 to 7"},
        {"[[slot.module.end_point]]\npcie_group_lower = 1",
         "b.toml:5: end_point: 'pcie_group_lower' is a key only where 'indirect' is true"},
        {"[[slot.module.end_point]]\nindirect = true\nusb_source = 1",
         "b.toml:6: end_point: 'usb_source' is a key only where 'indirect' is not true"},
        {test::repeated("[[slot.module.end_point]]\n", 32),
         "b.toml:35: end_point: a module has at most 31 end points"},
        // the OEM area
        {"[[slot.module.oem]]\nsrc_id = 1", "b.toml:4: oem: 'type' is missing"},
        {"[[slot.module.oem]]\ntype = 256",
         "b.toml:5: oem: 'type' must be a whole number from 0 to 255"},
        {"[[slot.module.oem]]\ntype = 1\nbay_id = 1",
         "b.toml:6: oem: 'bay_id' is a key only where 'type' is 2"},
        {"[[slot.module.oem]]\ntype = 3\ndata = '00'",
         "b.toml:6: oem: 'data' is a key only where 'type' is not 1, 2 or 3"},
        {"[[slot.module.oem]]\ntype = 9\nsrc_id = 1",
         "b.toml:6: oem: 'src_id' is a key only where 'type' is 1"},
        {"[[slot.module.oem]]\ntype = 1\nsize = 256",
         "b.toml:6: oem: 'size' must be a whole number from 0 to 255"},
        {"oem_checksum = 1",
         "b.toml:4: module: 'oem_checksum' is a key only where the module has an OEM area"},
        {"\n[[slot.module.oem]]\ntype = 4\ndata = '" + test::repeated("00 ", 251) + "'",
         "b.toml:5: module: the OEM area has more than 255 bytes"},
        // its place among the service's objects
        {"type = 'riser'", "b.toml:3: module: give both 'type' and 'object', or neither"},
        {"object = 'x'", "b.toml:3: module: give both 'type' and 'object', or neither"},
        {"type = 'Riser'\nobject = 'x'",
         "b.toml:4: module: 'Riser' is not a module type; did you mean 'riser'?"},
        {"type = 'x'\nobject = 'x'", "b.toml:4: module: 'x' is not a module type"},
        {"type = 'riser'\nobject = 'riser-1'",
         "b.toml:5: module: 'object' must be letters, digits and underscores"},
        {"type = 'riser'\nobject = ''",
         "b.toml:5: module: 'object' must be letters, digits and underscores"},
        {"colour = 1", "b.toml:4: module: 'colour' is not a key here"},
    };
    for (const auto& [module, message] : cases) {
        EXPECT_EQ(test::refusalOf("[[slot]]\nid = 1\n[slot.module]\n" + std::string(module)),
                  message)
            << module;
    }
}

TEST(Module, refusesBytesBesideItAndAPlaceBehindTheBlock) {
    const std::pair<const char*, const char*> cases[] = {
        {"[[slot]]\nid = 1\npayload = [1]\n[slot.module]",
         "b.toml:4: slot: 'module' cannot stand beside 'payload' or 'oem_area'"},
        {"[[slot]]\nid = 1\noem_area = [1]\n[slot.module]",
         "b.toml:4: slot: 'module' cannot stand beside 'payload' or 'oem_area'"},
        {"[[slot]]\nid = 1\npayload_offset = 24560\n[slot.module]",
         "b.toml:4: slot: 'module' at offset 24560 runs past the payload block's 24575 bytes"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
}

} // namespace
} // namespace board
