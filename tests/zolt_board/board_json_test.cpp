#include "zolt_board/board_json.h"

#include "board/board_loader.h"
#include "board/cpld_contents.h"
#include "tests/zolt_board/riser_slot.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt_board {
namespace {

board::Board parsed(const std::string& description) {
    return board::parseBoard(description, "board.toml");
}

// Compares texts, so that the order of the members counts, too.
void expectJson(const Json& json, std::string_view expected) {
    EXPECT_EQ(json.dump(1), Json::parse(expected).dump(1));
}

TEST(BoardJson, aSlotHasFieldsBesideBytes) {
    const board::Board board =
        parsed(std::string(
                   R"(faults = ["named-read PICPWR_2_D*T status 7", "raw-read 0x101B delay forever",
                         "raw-read 0x100D"])") +
               riserSlot);
    expectJson(slotsToJson(board, board::deriveCpldContents(board)), R"([{
        "id": 2,
        "occupied": true,
        "registers": {
            "address": 4110,
            "bytes": "D011000000001200000000000000",
            "fields": {
                "dstat": 3, "dbyp": false, "dpen": true, "apen": false, "astat": false,
                "module_class": 17, "module_class_index": 0, "payload_offset": 0,
                "dsl_ids": [18, 0, 0, 0, 0, 0, 0, 0]
            },
            "named": {
                "PICPWR_2_DSTAT": {"bytes": "03", "failures": [{"fault": 0, "status": 7}]},
                "PICPWR_2_DBYP": {"bytes": "00"},
                "PICPWR_2_DPEN": {"bytes": "01"},
                "PICPWR_2_APEN": {"bytes": "00"},
                "PICPWR_2_ASTAT": {"bytes": "00"},
                "PICPWR_2_MOD_CLASS": {"bytes": "11"},
                "PICPWR_2_MOD_CLASS_IDX": {"bytes": "00"},
                "PICPWR_2_PAYLOAD_OFFSET": {"bytes": "0000"}
            },
            "failures": [{"fault": 1, "delay_ms": "forever"}]
        },
        "payload": {
            "bytes": "011103000000F1A000000001000020000000000000000039",
            "fields": {
                "format_version": 1, "device_class": 17, "device_id": 0, "vendor_id": 61856,
                "device_version": 0, "xwires": 0, "pwires": 0, "target_type": 0,
                "target_address": 0, "static_payload_size": 3, "num_end_points": 1,
                "checksum": 57,
                "end_points": [{
                    "picpwr_index": 0, "i2c_mux_present": false, "indirect": false,
                    "hot_plug": false, "type": 1, "i2c_source": 0, "lane_width": 0,
                    "i2c_mux_channel": 0, "usb_hub_present": false, "usb_hub_channel": 0,
                    "usb_source": 0, "dsl_index_lower": 0, "dsl_lane_offset_lower": 0,
                    "dsl_index_upper": 0, "dsl_lane_offset_upper": 0, "bytes": "002000000000"
                }]
            }
        },
        "oem_area": {
            "bytes": "06010303A54E",
            "fields": {
                "oem_area_size": 6, "oem_descriptors": 1, "oem_checksum": 78,
                "oem": [{"type": 3, "slot_presence": 165, "size": 3, "data": "A5"}]
            }
        },
        "object": {"type": "riser", "object": "r1"}
    }])");
}

TEST(BoardJson, aSlotWithoutATableIsThereWhenAnOverrideShows) {
    const board::Board board = parsed(R"(
[override.named]
PICPWR_7_DSTAT = []
[override.raw]
0x1371 = 0xEE
)");
    const Json slots = slotsToJson(board, board::deriveCpldContents(board));
    ASSERT_EQ(slots.size(), 2U);
    expectJson(slots[0]["registers"]["named"]["PICPWR_7_DSTAT"], R"({"bytes": ""})");
    EXPECT_EQ(slots[0]["id"], 7);
    EXPECT_EQ(slots[0]["occupied"], false);
    EXPECT_EQ(slots[0]["payload"], nullptr);
    EXPECT_EQ(slots[0]["oem_area"], nullptr);
    EXPECT_EQ(slots[0]["object"], nullptr);
    EXPECT_EQ(slots[1]["id"], 63);
    expectJson(slots[1]["registers"]["fields"]["dsl_ids"], "[0, 0, 0, 0, 0, 0, 0, 238]");
}

TEST(BoardJson, bytesOfNoModuleHaveNoFields) {
    const board::Board board = parsed("[[slot]]\nid = 1\npayload = \"FF FF\"\noem_area = 7\n");
    const Json slots = slotsToJson(board, board::deriveCpldContents(board));
    expectJson(slots[0]["payload"], R"({"bytes": "FFFF", "fields": null})");
    expectJson(slots[0]["oem_area"], R"({"bytes": "07", "fields": null})");
}

TEST(BoardJson, controlRegistersThatReadZeroAreLeftOut) {
    const board::Board board = parsed(R"(
faults = ["raw-read 0x2400 status -3 once"]
[[flop]]
id = 1
pwr_policy = 2
num_links = 3
[[puck]]
id = 16
[override.named]
REMOTE_FAN_PICPWR_INDEX = 9
)");
    expectJson(controlRegistersToJson(board, board::deriveCpldContents(board)), R"([
        {
            "class": "remote_fan",
            "id": 1,
            "address": 8704,
            "bytes": "0000",
            "fields": {"pwr_policy": 0, "picpwr_index": 0},
            "named": {
                "REMOTE_FAN_PWR_POLICY": {"bytes": "00"},
                "REMOTE_FAN_PICPWR_INDEX": {"bytes": "09"}
            }
        },
        {
            "class": "flop",
            "id": 1,
            "address": 9216,
            "bytes": "803000",
            "fields": {
                "pwr_policy": 2, "fru_wp": false, "ocp_present": false, "unhide": false,
                "num_links": 3, "card_type": 0, "picpwr_index": 0
            },
            "named": {
                "FLOP_1_PWR_POLICY": {"bytes": "02"},
                "FLOP_1_FRU_WP": {"bytes": "00"},
                "FLOP_1_OCP_PRES": {"bytes": "00"},
                "FLOP_1_UNHIDE": {"bytes": "00"},
                "FLOP_1_PRSNTB": {"bytes": "00"},
                "FLOP_1_PICPWR_INDEX": {"bytes": "00"}
            },
            "failures": [{"fault": 0, "status": -3}]
        }
    ])");
}

TEST(BoardJson, theRiserMapHasTextsOfAnyBytes) {
    const board::Board board = parsed(R"(
[riser_map]
config_major = 3
description = "d"
[[riser_map.record]]
picpwr = 5
location = "R\u00E4"
hwuid = 0x1234
slots = [1, 2]
[[riser_map.record.dsl]]
id = 0x12
type = 2
ocp_index = 4
)");
    board::Bytes blob = board.riserMap;
    EXPECT_EQ(riserMapToJson(blob)["bytes"].get<std::string>().size(), 2048U);
    blob[59 + 3] = 0xFF; // the location's second byte
    // The checksum of the blob no longer fits, and is stated.
    expectJson(riserMapToJson(blob)["fields"], R"({
        "config_major": 3, "config_minor": 0, "karn_present": 0, "karn_hwuid": 0,
        "karn_slot_number": 0, "karn_slot_type": 0, "ocp_present": 0, "ocp_slot_number": 0,
        "ocp_slot_type": 0,
        "description": {"text": "d", "bytes": "64"},
        "stated_records": 1,
        "records": [{
            "picpwr": 5,
            "hwuid": 4660,
            "location": {"bytes": "52FFA4"},
            "part_number": {"text": "", "bytes": ""},
            "slots": [{"number": 1, "type": 2}],
            "dsls": [
                {"id": 18, "type": 2, "ocp_index": 4, "ocp_lane_index": 0, "bytes": "02040000"}
            ],
            "dsl_payloads": 1,
            "payload_size": 30
        }],
        "checksum": 88
    })");
    expectJson(riserMapToJson({1, 2}), R"({"bytes": "0102", "fields": null})");
}

TEST(BoardJson, i2cHasNodesWithNamesOfAnyBytes) {
    expectJson(i2cToJson(parsed(R"(
[[i2c.bus]]
number = 5
properties = { 8 = 0xFFFFFFFF }
[[i2c.bus.device]]
address = 0x50
memory = "01 FF"
[[i2c.bus.device]]
address = 0x51
node_type = "PSU"
node_index = 3
[[i2c.index_node]]
device_type = "PICPWR"
index = -1
name = [0xFF]
physical_bus = 20
parent = 5
[[i2c.index_node.sub]]
sub_index = 7
name = "mux"
[[i2c.index_node]]
device_type = "PICPWR"
sub_node_count = 9
[[i2c.type]]
device_type = "PUCK"
status = -7
)")
                             .i2c),
               R"({
        "buses": [{
            "number": 5,
            "properties": [{"id": 8, "value": 4294967295}],
            "devices": [
                {"address": 80, "memory": "01FF", "pointer_width": 1, "read_only": false,
                 "node": null, "properties": []},
                {"address": 81, "memory": "", "pointer_width": 1, "read_only": false,
                 "node": {"device_type": {"code": 12, "name": "PSU"}, "index": 3},
                 "properties": []}
            ]
        }],
        "index_nodes": [
            {"device_type": {"code": 16, "name": "PICPWR"}, "index": -1, "name": {"bytes": "FF"},
             "physical_bus": 20, "parent": 5, "discoverable": 0, "picpwr": 0, "is_sl_src": 0,
             "sl_src": 0, "hw_uid": 0, "slot_number": 0, "slot_type": 0, "bay_id": 0,
             "sub_node_count": null,
             "sub_nodes": [{"discoverable": 0, "sub_index": 7, "sub_node_count": 0,
                            "name": {"text": "mux", "bytes": "6D7578"}}]},
            {"device_type": {"code": 16, "name": "PICPWR"}, "index": 0,
             "name": {"text": "", "bytes": ""}, "physical_bus": -1, "parent": null,
             "discoverable": 0, "picpwr": 0, "is_sl_src": 0, "sl_src": 0, "hw_uid": 0,
             "slot_number": 0, "slot_type": 0, "bay_id": 0, "sub_node_count": 9, "sub_nodes": []}
        ],
        "answers": [{"device_type": {"code": 24, "name": "PUCK"}, "status": -7, "root": "none"}]
    })");
}

TEST(BoardJson, theServiceHasObjectsOrdersAndFailures) {
    Json service = serviceToJson(parsed(R"(
faults = ["service absent", "object extra error a.b", "object extra delay 1s"]
[service.info]
Ready = { signature = "d", value = nan }
[[service.object]]
path = "extra"
interface = "one"
[service.object.properties]
A = { signature = "v", value = ["as", ["x"]] }
[[service.order]]
path = "extra"
action = "error"
text = "no"
delay_ms = 5
[[service.order]]
interface = "one"
action = "reply"
signature = "y"
value = 7
after = 2
[[service.order]]
action = "reply"
[[service.order]]
action = "leave"
[[service.order]]
)"));
    EXPECT_EQ(service["managers"].size(), 11U);
    EXPECT_EQ(service["managers"][0], "/com/tesk/bmc/zolt/bp");
    service.erase("managers");
    expectJson(service, R"({
        "name": "com.tesk.bmc.zolt",
        "has_bus": true,
        "has_service": false,
        "interfaces": [
            {"path": "/com/tesk/bmc/zolt/info", "interface": "com.tesk.bmc.zolt.pcardInfo",
             "properties": [{"name": "Ready", "signature": "d", "value": "nan"}]},
            {"path": "/com/tesk/bmc/zolt/extra", "interface": "com.tesk.bmc.zolt.one",
             "properties": [{"name": "A", "signature": "v",
                             "value": {"signature": "as", "value": ["x"]}}],
             "failures": [{"fault": 1, "error": "a.b"}, {"fault": 2, "delay_ms": 1000}]}
        ],
        "orders": [
            {"path": "/com/tesk/bmc/zolt/extra", "interface": null, "after": 0, "times": null,
             "delay_ms": 5, "action": "error", "error": "org.freedesktop.DBus.Error.Failed",
             "text": "no"},
            {"path": null, "interface": "com.tesk.bmc.zolt.one", "after": 2, "times": null,
             "delay_ms": 0, "action": "reply", "signature": "y", "value": 7},
            {"path": null, "interface": null, "after": 0, "times": null, "delay_ms": 0,
             "action": "reply"},
            {"path": null, "interface": null, "after": 0, "times": null, "delay_ms": 0,
             "action": "leave"},
            {"path": null, "interface": null, "after": 0, "times": null, "delay_ms": 0,
             "action": "answer"}
        ]
    })");
}

TEST(BoardJson, aFaultHasItsWordsAndItsParts) {
    expectJson(faultsToJson(parsed(R"(faults = [
    "named-read PICPWR_* status 7 after 2 once",
    "raw-read 0x1000-0x1001",
    "hal-object PICPWR_PAYLOADS",
    "hal-read PICPWR_PAYLOADS delay forever",
    "hal-read PICPWR_PAYLOADS 1-0x177 status 2",
    "bus absent",
    "object riser/r1",
    "i2c-open 5 until recovery once",
    "i2c-ioctl 5 plain 0x50 error EBUSY delay 1s",
    "sysinfo PUCK status -2",
])")),
               R"([
        {"rule": "named-read PICPWR_* status 7 after 2 once", "kind": "named-read",
         "pattern": "PICPWR_*", "status": 7, "after": 2, "times": 1, "until_recovery": false},
        {"rule": "raw-read 0x1000-0x1001", "kind": "raw-read", "first_address": 4096,
         "last_address": 4097, "status": -1, "after": 0, "times": null, "until_recovery": false},
        {"rule": "hal-object PICPWR_PAYLOADS", "kind": "hal-object", "name": "PICPWR_PAYLOADS",
         "after": 0, "times": null, "until_recovery": false},
        {"rule": "hal-read PICPWR_PAYLOADS delay forever", "kind": "hal-read",
         "name": "PICPWR_PAYLOADS", "delay_ms": "forever", "after": 0, "times": null,
         "until_recovery": false},
        {"rule": "hal-read PICPWR_PAYLOADS 0x0001-0x0177 status 2", "kind": "hal-read",
         "name": "PICPWR_PAYLOADS", "first_byte": 1, "last_byte": 375, "status": 2, "after": 0,
         "times": null, "until_recovery": false},
        {"rule": "bus absent", "kind": "bus", "after": 0, "times": null,
         "until_recovery": false},
        {"rule": "object riser/r1", "kind": "object", "path": "/com/tesk/bmc/zolt/riser/r1",
         "error": "org.freedesktop.DBus.Error.Failed", "after": 0, "times": null,
         "until_recovery": false},
        {"rule": "i2c-open 5 once until recovery", "kind": "i2c-open", "bus": 5, "status": 5,
         "error": "EIO", "after": 0, "times": 1, "until_recovery": true},
        {"rule": "i2c-ioctl 5 plain 80 error EBUSY delay 1000ms", "kind": "i2c-ioctl", "bus": 5,
         "command": "plain", "selector": 80, "status": 16, "error": "EBUSY", "delay_ms": 1000,
         "after": 0, "times": null, "until_recovery": false},
        {"rule": "sysinfo PUCK status -2", "kind": "sysinfo",
         "device_type": {"code": 24, "name": "PUCK"}, "status": -2, "after": 0, "times": null,
         "until_recovery": false}
    ])");
}

} // namespace
} // namespace zolt_board
