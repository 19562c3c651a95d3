// What a comparison says of two small boards, line by line.
#include "zolt_board/differences.h"

#include "board/board_loader.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt_board {
namespace {

struct Case {
    const char* what;
    const char* before;
    const char* after;
    const char* text;
};

void PrintTo(const Case& row, std::ostream* out) {
    *out << row.what;
}

std::string textOf(const std::vector<Change>& changes) {
    std::string text;
    for (const Change& change : changes) {
        text.append(zolt_board::textOf(change)).append("\n");
    }
    return text;
}

std::string compare(const std::string& before, const std::string& after) {
    return textOf(differences(board::parseBoard(before, "before.toml"),
                              board::parseBoard(after, "after.toml")));
}

class DifferencesText : public testing::TestWithParam<Case> {};

TEST_P(DifferencesText, nameWhatChanged) {
    EXPECT_EQ(compare(GetParam().before, GetParam().after), GetParam().text);
}

TEST_P(DifferencesText, boardIsTheSameAsItself) {
    EXPECT_EQ(compare(GetParam().before, GetParam().before), "");
    EXPECT_EQ(compare(GetParam().after, GetParam().after), "");
}

constexpr Case sameBoards[] = {
    {"names and comments do not count", R"(name = "one")", "name = \"other\" # a comment", ""},
    {"a value that is the default", "[[slot]]\nid = 5\ndstat = 3",
     "[[slot]]\nid = 5\ndstat = 3\ndpen = false\napen = false", ""},
    {"an empty slot", "[[slot]]\nid = 5", "", ""},
    {"another order of tables", "[[slot]]\nid = 5\ndstat = 3\n[[slot]]\nid = 6\ndstat = 2",
     "[[slot]]\nid = 6\ndstat = 2\n[[slot]]\nid = 5\ndstat = 3", ""},
    {"an override that changes nothing", "[[slot]]\nid = 5\ndpen = true",
     "[[slot]]\nid = 5\ndpen = true\n[override.named]\nPICPWR_5_DPEN = 1\n"
     "[override.raw]\n0x1038 = 0x10",
     ""},
    {"a field by its name and its bytes", "[[slot]]\nid = 5\ndpen = true",
     "[override.named]\nPICPWR_5_DPEN = 1\n[override.raw]\n0x1038 = 0x10", ""},
    {"a module, and its bytes", "[[slot]]\nid = 5\n[slot.module]\ndevice_class = 0x1A",
     "[[slot]]\nid = 5\npayload = \"00 1A 02 00 00 00 00 00 00 00 00 00 00 00 00 E4\"", ""},
    {"bytes of a slot at which another slot points, and the other way round",
     "[[slot]]\nid = 5\ndstat = 3\nmodule_class = 1\npayload = \"01 02\"\n"
     "[[slot]]\nid = 6\nmodule_class = 2\ndstat = 3",
     "[[slot]]\nid = 5\ndstat = 3\nmodule_class = 1\n"
     "[[slot]]\nid = 6\nmodule_class = 2\ndstat = 3\npayload = \"01 02\"",
     ""},
    {"properties of the service by default", "",
     "[service.info]\nSlotMappingComplete = true\nFRUreadComplete = true", ""},
    {"a most_bytes that is no limit", "", "[hal.PICPWR_PAYLOADS]\nmost_bytes = 24576", ""},
    {"an answer of the parser that is the usual one",
     "[[i2c.type]]\ndevice_type = \"PUCK\"\n"
     "status = -2",
     "", ""},
    {"a bus that an index node has made already",
     "[[i2c.index_node]]\ndevice_type = \"PUCK\"\nphysical_bus = 20",
     "[[i2c.bus]]\nnumber = 20\n[[i2c.index_node]]\ndevice_type = \"PUCK\"\nphysical_bus = 20", ""},
    {"a fault in other words", R"(faults = ["raw-read 0x1000 delay 1s 1 times"])",
     R"(faults = ["raw-read 4096 once delay 1000ms"])", ""},
};

constexpr Case slotRegisters[] = {
    {"every field of a slot", "[[slot]]\nid = 5\ndstat = 3\ndpen = true\nmodule_class = 0x12\n",
     "[[slot]]\nid = 5\ndstat = 2\ndbyp = true\napen = true\nastat = true\nmodule_class = 0x13\n"
     "module_class_index = 4\npayload_offset = 0x180\ndsl_ids = [1, 0, 3]",
     "slot 5: dstat 3 -> 2\n"
     "slot 5: dbyp false -> true\n"
     "slot 5: dpen true -> false\n"
     "slot 5: apen false -> true\n"
     "slot 5: astat false -> true\n"
     "slot 5: module_class 0x12 -> 0x13\n"
     "slot 5: module_class_index 0 -> 4\n"
     "slot 5: payload_offset 0x0000 -> 0x0180\n"
     "slot 5: dsl1_id 0 -> 1\n"
     "slot 5: dsl3_id 0 -> 3\n"},
    {"the named read alone", "[[slot]]\nid = 5\ndstat = 3",
     "[[slot]]\nid = 5\ndstat = 3\n[override.named]\nPICPWR_5_DSTAT = 1\nPICPWR_5_DPEN = []\n"
     "PICPWR_5_MOD_CLASS = \"01 02\"",
     "slot 5: dstat (named read) 3 -> 1\n"
     "slot 5: dpen (named read): false -> no bytes\n"
     "slot 5: module_class (named read): 0x00 -> 01 02\n"},
    {"the raw register alone", "[[slot]]\nid = 5\ndstat = 3",
     "[[slot]]\nid = 5\ndstat = 3\n[override.raw]\n0x1038 = 0xD6\n0x103D = 0xFF",
     "slot 5: dpen (raw register) false -> true\n"
     "raw: register 0x1038: 0xC0 -> 0xD6\n"
     "raw: register 0x103D: 0x00 -> 0xFF\n"},
    {"both views, to different values", "[[slot]]\nid = 5\ndstat = 3",
     "[[slot]]\nid = 5\ndstat = 2\n[override.named]\nPICPWR_5_DSTAT = 1",
     "slot 5: dstat (named read) 3 -> 1\n"
     "slot 5: dstat (raw register) 3 -> 2\n"},
    {"registers of an empty slot", "", "[[slot]]\nid = 5\ndpen = true",
     "slot 5: dpen false -> true\n"},
};

constexpr Case modules[] = {
    {"a module that is removed",
     "[[slot]]\nid = 7\ndstat = 3\ndpen = true\ndsl_ids = [1]\n[slot.module]\ntype = \"riser\"\n"
     "object = \"riser1\"\ndevice_class = 0x11\n[service]\n",
     "", "slot 7: riser removed\n"},
    {"modules that are added, by what they are", "",
     "[[slot]]\nid = 7\ndstat = 3\n"
     "[[slot]]\nid = 8\ndstat = 3\nmodule_class = 0x2A\n"
     "[[slot]]\nid = 9\n[slot.module]\ndevice_class = 0x1B\n"
     "[[slot]]\nid = 10\npayload = \"01 11\"\n"
     "[[slot]]\nid = 11\n[slot.module]\ntype = \"flop\"\nobject = \"f1\"",
     "slot 7: module added\n"
     "slot 8: bp added\n"
     "slot 9: rfc added\n"
     "slot 10: module of class 0x11 added\n"
     "slot 11: flop added\n"},
    {"a module that leaves a register behind",
     "[[slot]]\nid = 7\ndstat = 3\ndpen = true\napen = true",
     "[[slot]]\nid = 7\ndpen = true\n"
     "dbyp = true",
     "slot 7: module removed\n"
     "slot 7: dbyp false -> true\n"},
    {"a module that moved",
     "[[slot]]\nid = 7\ndstat = 3\ndpen = true\n[slot.module]\ndevice_class = 0x1A\ndevice_id = 5",
     "[[slot]]\nid = 9\ndstat = 3\n[slot.module]\ndevice_class = 0x1A\ndevice_id = 5",
     "slot 7: puck moved to slot 9\n"
     "slot 9: dpen true -> false\n"},
    {"a module whose object moved with other fields",
     "[[slot]]\nid = 7\ndstat = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p1\"\n"
     "device_class = 0x1A\ndevice_version = 1",
     "[[slot]]\nid = 9\ndstat = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p1\"\n"
     "device_class = 0x1A\ndevice_version = 2",
     "slot 7: puck moved to slot 9\n"
     "slot 9: device_version 1 -> 2\n"},
    {"like modules, of which one moved",
     "[[slot]]\nid = 1\ndstat = 3\npayload = \"01 02\"\n[[slot]]\nid = 2\ndstat = 3\n"
     "payload = \"01 02\"\npayload_offset = 8",
     "[[slot]]\nid = 1\ndstat = 3\npayload = \"01 02\"\n[[slot]]\nid = 3\ndstat = 3\n"
     "payload = \"01 02\"\npayload_offset = 8",
     "slot 2: module of class 0x02 moved to slot 3\n"},
    {"a copy of a module has not moved", "[[slot]]\nid = 1\ndstat = 3\npayload = \"01 02\"",
     "[[slot]]\nid = 1\ndstat = 3\npayload = \"01 02\"\n[[slot]]\nid = 3\ndstat = 3\n"
     "payload = \"01 02\"",
     "slot 3: module of class 0x02 added\n"},
    {"a payload without a change of the slot's state",
     "[[slot]]\nid = 1\ndstat = 3\npayload = \"01 02\"\nmodule_class = 2\n"
     "[[slot]]\nid = 2\ndstat = 3\nmodule_class = 2\npayload_offset = 8",
     "[[slot]]\nid = 1\ndstat = 3\nmodule_class = 2\n"
     "[[slot]]\nid = 2\ndstat = 3\npayload = \"01 02\"\npayload_offset = 8",
     "slot 1: payload removed\n"
     "slot 2: payload added\n"},
};

constexpr Case payloads[] = {
    {"fields of the header",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x1A\nformat_version = 1\nxwires = 4",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x1A\nformat_version = 2\ndevice_id = "
     "0x1234\n"
     "target_address = 0x50\nnum_end_points = 3\nstatic_payload_size = 9\nchecksum = 1",
     "slot 3: format_version 1 -> 2\n"
     "slot 3: device_id 0x0000 -> 0x1234\n"
     "slot 3: xwires 4 -> 0\n"
     "slot 3: target_address 0x00 -> 0x50\n"
     "slot 3: static_payload_size correct -> 9\n"
     "slot 3: num_end_points correct -> 3\n"
     "slot 3: checksum correct -> 0x01\n"},
    {"fields of a backplane",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x2A\n[slot.module.backplane]\nbay_id = 3",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x2A\n[slot.module.backplane]\nbackplane_id "
     "= "
     "300",
     "slot 3, backplane: bay_id 3 -> 0\n"
     "slot 3, backplane: backplane_id 0 -> 300\n"},
    {"end points",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = 1\n"
     "[[slot.module.end_point]]\ntype = 2\nusb_source = 3\n[[slot.module.end_point]]\ntype = 7",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = 1\n"
     "[[slot.module.end_point]]\ntype = 2\nindirect = true\npcie_group_upper = 5\nhot_plug = true\n"
     "[[slot.module.end_point]]\ntype = 7",
     "slot 3, end point 2: indirect false -> true\n"
     "slot 3, end point 2: hot_plug false -> true\n"
     "slot 3, end point 2: usb_source 3 -> none\n"
     "slot 3, end point 2: pcie_group_upper none -> 5\n"},
    {"an end point in front of others",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = 1\n"
     "[[slot.module.end_point]]\ntype = 2",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = 5\n"
     "[[slot.module.end_point]]\ntype = 1\n[[slot.module.end_point]]\ntype = 2",
     "slot 3: end point 1 added\n"},
    {"another module in the slot",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x11\n[[slot.module.end_point]]\ntype = 1",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x2A",
     "slot 3: module_class 0x11 -> 0x2A\n"
     "slot 3: device_class 0x11 -> 0x2A\n"
     "slot 3: backplane descriptor added\n"
     "slot 3: end point 1 removed\n"},
    {"bytes that no module has",
     "[[slot]]\nid = 3\nmodule_class = 1\npayload = \"01 02 03 04 05 06 07 08\"",
     "[[slot]]\nid = 3\nmodule_class = 1\npayload = \"01 FF FE 04 05 06 07 FF 09 0A\"",
     "slot 3: payload bytes 0x01-0x02: 02 03 -> FF FE\n"
     "slot 3: payload byte 0x07: 0x08 -> 0xFF\n"
     "slot 3: payload bytes 0x08-0x09: none -> 09 0A\n"},
    {"fields of the OEM area",
     "[[slot]]\nid = 3\n[slot.module]\n[[slot.module.oem]]\ntype = 1\nsrc_id = 1\n"
     "[[slot.module.oem]]\ntype = 9\ndata = \"01\"",
     "[[slot]]\nid = 3\n[slot.module]\noem_descriptors = 7\noem_area_size = 40\noem_checksum = 9\n"
     "[[slot.module.oem]]\ntype = 1\nsrc_id = 2\n[[slot.module.oem]]\ntype = 3\nslot_presence = 1\n"
     "[[slot.module.oem]]\ntype = 2",
     "slot 3: oem_area_size correct -> 40\n"
     "slot 3: oem_descriptors correct -> 7\n"
     "slot 3: oem_checksum correct -> 0x09\n"
     "slot 3, OEM descriptor 1: src_id 0x01 -> 0x02\n"
     "slot 3, OEM descriptor 2: type 9 -> 3\n"
     "slot 3: OEM descriptor 3 added\n"},
    {"an OEM area that no description has",
     "[[slot]]\nid = 3\npayload = \"01\"\noem_area = \"09 01\"",
     "[[slot]]\nid = 3\npayload = \"01\"\noem_area = \"09 02\"",
     "slot 3: OEM area byte 0x01: 0x01 -> 0x02\n"},
    {"an OEM area that is added", "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x1A",
     "[[slot]]\nid = 3\n[slot.module]\ndevice_class = 0x1A\n[[slot.module.oem]]\ntype = 1",
     "slot 3: OEM area added\n"},
    {"a raw register in a payload alone", "[[slot]]\nid = 3\nmodule_class = 1\npayload = \"01 02\"",
     "[[slot]]\nid = 3\nmodule_class = 1\npayload = \"01 02\"\n[override.raw]\n0x2A02 = 3\n"
     "0x2A00 = 9",
     "slot 3: payload byte 0x01: 0x02 -> 0x03\n"
     "raw: register 0x2A00: 0x00 -> 0x09\n"},
};

constexpr Case riserMaps[] = {
    {"the head", "[riser_map]\ndescription = \"A\"\nkarn_hwuid = 1",
     "[riser_map]\ndescription = \"B\\nC\"\nkarn_hwuid = 2\nrecords = 0\nchecksum = 5\n"
     "config_minor = 3",
     "riser map: config_minor 0 -> 3\n"
     "riser map: description \"A\" -> \"B\\u000AC\"\n"
     "riser map: karn_hwuid 0x0001 -> 0x0002\n"
     "riser map: checksum correct -> 0x05\n"},
    {"a record",
     "[riser_map]\n[[riser_map.record]]\npicpwr = 3\npart_number = \"A\"\nslots = [1, 2]\n"
     "[[riser_map.record.dsl]]\nid = 8\ntype = 1\nsl_index = 2\n"
     "[[riser_map.record.dsl]]\nid = 9\ntype = 3",
     "[riser_map]\n[[riser_map.record]]\npicpwr = 3\npart_number = \"B\"\nslots = [1, 3]\n"
     "location = \"left\"\nhwuid = 7\n[[riser_map.record.dsl]]\nid = 8\ntype = 1\nsl_index = 3\n"
     "[[riser_map.record.dsl]]\nid = 10\ntype = 2",
     "riser map, slot 3: location \"\" -> \"left\"\n"
     "riser map, slot 3: part_number \"A\" -> \"B\"\n"
     "riser map, slot 3: hwuid 0x0000 -> 0x0007\n"
     "riser map, slot 3: slots: 01 02 -> 01 03\n"
     "riser map, slot 3: link 9 removed\n"
     "riser map, slot 3: link 10 added\n"
     "riser map, slot 3, link 8: sl_index 2 -> 3\n"},
    {"records in another order",
     "[riser_map]\n[[riser_map.record]]\npicpwr = 3\n[[riser_map.record]]\npicpwr = 4\n",
     "[riser_map]\n[[riser_map.record]]\npicpwr = 4\n[[riser_map.record]]\npicpwr = 3\n",
     "riser map: records in another order\n"},
    {"records", "[riser_map]\n[[riser_map.record]]\npicpwr = 3",
     "[riser_map]\n[[riser_map.record]]\npicpwr = 4",
     "riser map: record of slot 3 removed\n"
     "riser map: record of slot 4 added\n"},
    {"bytes that are no mapping", "[riser_map]\nbytes = \"01 02\"",
     "[riser_map]\nbytes = \"01 03\"", "riser map: byte 0x001: 0x02 -> 0x03\n"},
    {"the raw registers alone", "", "[override.raw]\n0x8A01 = 7",
     "raw: register 0x8A01: 0x00 -> 0x07\n"},
};

constexpr Case others[] = {
    {"control registers", "[[cem_riser]]\nid = 2\npwr_policy = 1\npicpwr_index = 0x82",
     "connector_1c = [{ card_present = true, payload_offset = 0x2D00 }]\n"
     "[[cem_riser]]\nid = 2\nfru_wp = true\npicpwr_index = 6",
     "connector_1c: card_present false -> true\n"
     "connector_1c: payload_offset 0x0000 -> 0x2D00\n"
     "cem_riser 2: pwr_policy 1 -> 0\n"
     "cem_riser 2: fru_wp false -> true\n"
     "cem_riser 2: picpwr_index 0x82 -> 6\n"},
    {"names that a board does not have", "[override.named]\nOLD = 7",
     "[override.named]\n\"NEW\\u001B\" = \"01 02\"",
     "register NEW\\x1B: none -> 01 02\n"
     "register OLD: 0x07 -> none\n"},
    {"the HAL's object", "",
     "[hal.PICPWR_PAYLOADS]\nmost_bytes = 20\nunregister_status = -1\n"
     "interrupt_callback = true",
     "hal PICPWR_PAYLOADS: interrupt_callback false -> true\n"
     "hal PICPWR_PAYLOADS: unregister_status 0 -> -1\n"
     "hal PICPWR_PAYLOADS: most_bytes no limit -> 20\n"},
    {"faults", R"(faults = ["bus absent", "raw-read 0x1000"])",
     R"(faults = ["raw-read 0x1000", "i2c-open 5 error ENOENT after 2"])",
     "faults: 'bus absent' removed\n"
     "faults: 'i2c-open 5 error ENOENT after 2' added\n"},
    {"faults in another order", R"(faults = ["bus absent", "raw-read 0x1000"])",
     R"(faults = ["raw-read 0x1000", "bus absent"])", "faults: rules in another order\n"},
};

constexpr Case services[] = {
    {"objects", "[[service.object]]\npath = \"puck/old\"\ninterface = \"puckCIR\"",
     "[[service.object]]\npath = \"puck/new\"\ninterface = \"puckCIR\"",
     "service: puck/new (puckCIR) created\n"
     "service: puck/old (puckCIR) removed\n"},
    {"properties", "[service.info]\nA = 1\nB = \"x\"\nC = true",
     "[service.info]\nA = { signature = \"u\", value = 1 }\nB = \"y\\u007F\"\nD = 7",
     "service, info (pcardInfo): A 1 -> { signature = \"u\", value = 1 }\n"
     "service, info (pcardInfo): B \"x\" -> \"y\\u007F\"\n"
     "service, info (pcardInfo): C true -> none\n"
     "service, info (pcardInfo): D none -> 7\n"},
    {"a property that differs from the payload",
     "[[slot]]\nid = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p1\"\ndevice_class = 0x1A\n"
     "device_id = 1",
     "[[slot]]\nid = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p1\"\ndevice_class = 0x1A\n"
     "device_id = 2\n[[service.object]]\npath = \"puck/p1\"\ninterface = \"puckCIR\"\n"
     "without = [\"DeviceVer\"]\n[service.object.properties]\nVendorId = 7",
     "slot 3: device_id 0x0001 -> 0x0002\n"
     "service, puck/p1 (puckCIR): DeviceVer { signature = \"y\", value = 0 } -> none\n"
     "service, puck/p1 (puckCIR): VendorId 0 -> 7\n"},
    {"another object for a module",
     "[[slot]]\nid = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p1\"",
     "[[slot]]\nid = 3\n[slot.module]\ntype = \"puck\"\nobject = \"p2\"",
     "service: puck/p1 (puckCIR) removed\n"
     "service: puck/p2 (puckCIR) created\n"},
    {"orders", "[[service.order]]\naction = \"leave\"",
     "[[service.order]]\npath = \"info\"\naction = \"error\"\nerror = \"a.b\"\ntext = \"no\"\n"
     "after = 2\ndelay_ms = 5\n[[service.order]]\naction = \"reply\"\nsignature = \"as\"\n"
     "value = [\"x\"]\ninterface = \"cemCIR\"",
     "orders: 'leave' removed\n"
     "orders: 'error a.b \"no\" for path /com/tesk/bmc/zolt/info after 2 delay_ms 5' "
     "added\n"
     "orders: 'reply { signature = \"as\", value = [\"x\"] } and interface "
     "com.tesk.bmc.zolt.cemCIR' added\n"},
};

constexpr Case i2c[] = {
    {"buses and devices",
     "[[i2c.bus]]\nnumber = 12\nproperties = { 8 = 1 }\n[[i2c.bus.device]]\naddress = 0x51\n"
     "memory = \"01\"\n[[i2c.bus]]\nnumber = 14",
     "[[i2c.bus]]\nnumber = 12\nproperties = { 8 = 2, 10 = 3 }\n[[i2c.bus.device]]\n"
     "address = 0x50\nmemory = \"01\"\n[[i2c.bus]]\nnumber = 13",
     "/dev/i2c-12: property 8 0x01 -> 0x02\n"
     "/dev/i2c-12: property 10 none -> 0x03\n"
     "/dev/i2c-12: device 0x50 created\n"
     "/dev/i2c-12: device 0x51 removed\n"
     "/dev/i2c-13: bus created\n"
     "/dev/i2c-14: bus removed\n"},
    {"a device",
     "[[i2c.bus]]\nnumber = 12\n[[i2c.bus.device]]\naddress = 0x50\nmemory = \"01 02 03\"",
     "[[i2c.bus]]\nnumber = 12\n[[i2c.bus.device]]\naddress = 0x50\nmemory = \"01 FF 03 04 05\"\n"
     "read_only = true\npointer_width = 2\nnode_type = \"PUCK\"\nnode_index = 3\n"
     "properties = { 1 = 2 }",
     "/dev/i2c-12, device 0x50: size 3 -> 5\n"
     "/dev/i2c-12, device 0x50: memory byte 0x01: 0x02 -> 0xFF\n"
     "/dev/i2c-12, device 0x50: memory bytes 0x03-0x04: none -> 04 05\n"
     "/dev/i2c-12, device 0x50: pointer_width 1 -> 2\n"
     "/dev/i2c-12, device 0x50: read_only false -> true\n"
     "/dev/i2c-12, device 0x50: node none -> [\"PUCK\", 3]\n"
     "/dev/i2c-12, device 0x50: property 1 none -> 0x02\n"},
    {"index nodes",
     "[[i2c.index_node]]\ndevice_type = \"PUCK\"\nindex = 1\nname = \"a\"\nphysical_bus = 20\n"
     "[[i2c.index_node.sub]]\nname = \"x\"\n[[i2c.index_node]]\ndevice_type = 60\nindex = 1",
     "[[i2c.bus]]\nnumber = 3\n[[i2c.index_node]]\ndevice_type = \"PUCK\"\nindex = 1\n"
     "name = [0x61, 0xFF]\nphysical_bus = 21\nparent = 3\nhw_uid = 5\nsub_node_count = 9\n"
     "picpwr = 4\n[[i2c.index_node.sub]]\nname = \"y\"\nsub_index = -1\n[[i2c.index_node.sub]]\n"
     "[[i2c.index_node]]\ndevice_type = \"RFC\"\nindex = 2",
     "/dev/i2c-3: bus created\n"
     "topology: index node 60 1 removed\n"
     "topology: index node RFC 2 added\n"
     "topology, index node PUCK 1: name \"a\" -> \"a\\xFF\"\n"
     "topology, index node PUCK 1: picpwr 0 -> 4\n"
     "topology, index node PUCK 1: hw_uid 0x0000 -> 0x0005\n"
     "topology, index node PUCK 1: physical_bus 20 -> 21\n"
     "topology, index node PUCK 1: parent none -> 3\n"
     "topology, index node PUCK 1: sub_node_count correct -> 9\n"
     "topology, index node PUCK 1, sub node 1: name \"x\" -> \"y\"\n"
     "topology, index node PUCK 1, sub node 1: sub_index 0 -> -1\n"
     "topology, index node PUCK 1: sub node 2 added\n"},
    {"index nodes in another order",
     "[[i2c.index_node]]\ndevice_type = \"PUCK\"\nindex = 1\n[[i2c.index_node]]\n"
     "device_type = \"PUCK\"\nindex = 2",
     "[[i2c.index_node]]\ndevice_type = \"PUCK\"\nindex = 2\n[[i2c.index_node]]\n"
     "device_type = \"PUCK\"\nindex = 1",
     "topology: index nodes of type PUCK in another order\n"},
    {"answers of the parser", "[[i2c.type]]\ndevice_type = \"PUCK\"\nstatus = 5",
     "[[i2c.type]]\ndevice_type = \"PUCK\"\nstatus = 6\nroot = \"empty\"\n"
     "[[i2c.type]]\ndevice_type = \"RFC\"\nroot = \"none\"",
     "topology, parser of PUCK: status 5 -> 6\n"
     "topology, parser of PUCK: root \"none\" -> \"empty\"\n"
     "topology, parser of RFC: status usual -> 0\n"
     "topology, parser of RFC: root usual -> \"none\"\n"},
};

INSTANTIATE_TEST_SUITE_P(Same, DifferencesText, testing::ValuesIn(sameBoards));
INSTANTIATE_TEST_SUITE_P(Registers, DifferencesText, testing::ValuesIn(slotRegisters));
INSTANTIATE_TEST_SUITE_P(Modules, DifferencesText, testing::ValuesIn(modules));
INSTANTIATE_TEST_SUITE_P(Payloads, DifferencesText, testing::ValuesIn(payloads));
INSTANTIATE_TEST_SUITE_P(RiserMaps, DifferencesText, testing::ValuesIn(riserMaps));
INSTANTIATE_TEST_SUITE_P(Others, DifferencesText, testing::ValuesIn(others));
INSTANTIATE_TEST_SUITE_P(Services, DifferencesText, testing::ValuesIn(services));
INSTANTIATE_TEST_SUITE_P(I2c, DifferencesText, testing::ValuesIn(i2c));

} // namespace
} // namespace zolt_board
