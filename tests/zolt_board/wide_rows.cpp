// Rows of the I2C nodes and of the service.
#include "tests/zolt_board/finding_rows.h"

namespace zolt_board::test {

namespace {

std::string nodeWith(const std::string& keys) {
    return "[[i2c.index_node]]\ndevice_type = \"PUCK\"\nindex = 3\nname = \"p\"\n" + keys;
}

// Slot 5 with a riser of one end point that the service publishes.
std::string riserWith(const std::string& more) {
    return "[[slot]]\nid = 5\ndstat = 3\n[slot.module]\ntype = \"riser\"\nobject = \"r1\"\n"
           "format_version = 2\ndevice_class = 0x11\ndevice_id = 0x1101\nvendor_id = 0xF1A0\n"
           "device_version = 9\n[[slot.module.end_point]]\npicpwr_index = 1\n" +
           more;
}

// A change of the riser's object.
std::string riserObject(const std::string& more) {
    return riserWith("[[service.object]]\npath = \"riser/r1\"\ninterface = \"cemCIR\"\n" + more);
}

std::string properties(const std::string& keys) {
    return riserObject("[service.object.properties]\n" + keys);
}

std::string slotWithType(const std::string& type, const std::string& deviceClass) {
    return "[[slot]]\nid = 5\ndstat = 3\n[slot.module]\nobject = \"m\"\ntype = \"" + type +
           "\"\ndevice_class = " + deviceClass;
}

// An object that no slot of the description names.
std::string lone(const std::string& path) {
    return "[[service.object]]\npath = \"" + path + "\"\ninterface = \"cemCIR\"";
}

// Slot 6 with another riser. The service does not publish it by itself.
const std::string other = "[[slot]]\nid = 6\ndstat = 3\n[slot.module]\nformat_version = 2\n"
                          "device_class = 0x11\ndevice_id = 0x1102\n";

// What the service would publish of slot 6.
const std::string otherObject =
    lone("riser/r2") + "\n[service.object.properties]\n"
                       "PayloadFrmtVer = { signature = \"y\", value = 2 }\n"
                       "DeviceClass = { signature = \"y\", value = 0x11 }\n"
                       "StaticPaylodSize = { signature = \"y\", value = 2 }\n"
                       "DeviceId = 0x1102\nVendorId = 0\n"
                       "DeviceVer = { signature = \"y\", value = 0 }\n"
                       "NumWires = { signature = \"y\", value = 0 }\n"
                       "TargetI2cDevType = { signature = \"y\", value = 0 }\n"
                       "TargetI2cDevAddr = { signature = \"y\", value = 0 }\n"
                       "EndPoint0 = { signature = \"(yyyyyy)\", value = [0, 0, 0, 0, 0, 0] }\n"
                       "EndPoint1 = { signature = \"(yyyyyy)\", value = [0, 0, 0, 0, 0, 0] }\n"
                       "EndPoint2 = { signature = \"(yyyyyy)\", value = [0, 0, 0, 0, 0, 0] }\n"
                       "EndPoint3 = { signature = \"(yyyyyy)\", value = [0, 0, 0, 0, 0, 0] }\n"
                       "checksum = { signature = \"y\", value = 0xD8 }\n";

} // namespace

std::vector<FindingRow> nodeRows() {
    return {
        {Kind::nodeBusMissing,
         "high",
         nodeWith("physical_bus = 1048576"),
         {"error: node-bus-missing: node PUCK 3 'p': the physical bus is 1048576; expected 0 to "
          "1048575, or -1 for no bus"},
         nodeWith("physical_bus = 1048575")},
        {Kind::nodeBusMissing,
         "low",
         nodeWith("physical_bus = -2"),
         {"error: node-bus-missing: node PUCK 3 'p': the physical bus is -2; expected 0 to "
          "1048575, "
          "or -1 for no bus"},
         nodeWith("physical_bus = -1")},
        {Kind::nodeCountDiffers,
         "list",
         nodeWith("sub_node_count = 2\n[[i2c.index_node.sub]]\nname = \"s\""),
         {"error: node-count-differs: node PUCK 3 'p': the node states 2 sub nodes; expected the 1 "
          "of its list"},
         nodeWith("sub_node_count = 1\n[[i2c.index_node.sub]]\nname = \"s\"")},
        // The driver's device nodes are listed, too.
        {Kind::nodeCountDiffers,
         "device_nodes",
         nodeWith("physical_bus = 7\nsub_node_count = 0\n") +
             "[[i2c.bus]]\nnumber = 7\n[[i2c.bus.device]]\naddress = 0x50\nnode_type = \"PUCK\"",
         {"error: node-count-differs: node PUCK 3 'p': the node states 0 sub nodes; expected the 1 "
          "of its list"},
         nodeWith("physical_bus = 7\nsub_node_count = 0\n") +
             "[[i2c.bus]]\nnumber = 7\n[[i2c.bus.device]]\naddress = 0x50\nsize = 1"},
        {Kind::nodeCountDiffers,
         "hidden",
         nodeWith("sub_node_count = 1"),
         {"error: node-count-differs: node PUCK 3 'p': the node states 1 sub node; expected the 0 "
          "of its list"},
         "faults = [\"sysinfo PUCK\"]\n" + nodeWith("sub_node_count = 1")},
        {Kind::picpwrOutOfRange,
         "node",
         nodeWith("picpwr = 64"),
         {"error: picpwr-out-of-range: node PUCK 3 'p': the PICPWR ID is 64; expected 1 to 63, or "
          "0 "
          "for no slot"},
         nodeWith("picpwr = 63")},
        {Kind::textWithoutEnd,
         "node",
         "[[i2c.index_node]]\ndevice_type = 60\nname = \"0123456789ABCDE\\u001B\"",
         {"warning: text-without-end: node type 60 0 '0123456789ABCDE\\x1B': all 16 characters of "
          "the name are in use; expected a NUL at the end"},
         "[[i2c.index_node]]\ndevice_type = 60\nname = \"0123456789ABCDE\""},
        {Kind::textWithoutEnd,
         "sub_node",
         nodeWith("[[i2c.index_node.sub]]\nname = \"0123456789ABCDEF01234567\""),
         {"warning: text-without-end: node PUCK 3 'p': all 24 characters of the names of 1 sub "
          "node "
          "are in use; expected a NUL at the end"},
         nodeWith("[[i2c.index_node.sub]]\nname = \"0123456789ABCDEF0123456\"")},
    };
}

std::vector<FindingRow> serviceRows() {
    return {
        {Kind::objectClassDiffers,
         "puck_as_riser",
         slotWithType("riser", "0x1A"),
         {"error: object-class-differs: object riser/m: the type riser has the interface cemCIR, "
          "and the payload of slot 5 the class 0x1A; expected a type with the interface puckCIR"},
         slotWithType("puck", "0x1A")},
        {Kind::objectClassDiffers,
         "card_as_backplane",
         slotWithType("bp", "0x29"),
         {"error: object-class-differs: object bp/m: the type bp has the interface backplaneCIR, "
          "and the payload of slot 5 the class 0x29; expected a type with the interface cemCIR"},
         slotWithType("bp", "0x2A")},
        {Kind::objectClassDiffers,
         "card_as_rfc",
         slotWithType("bi", "0x1B"),
         {"error: object-class-differs: object bi/m: the type bi has the interface cemCIR, and the "
          "payload of slot 5 the class 0x1B; expected a type with the interface rfcCIR"},
         slotWithType("rfc", "0x1B")},
        {Kind::propertyMissing,
         "one",
         riserObject("without = [\"checksum\"]"),
         {"error: property-missing: object riser/r1 property checksum: the object lacks the "
          "property; expected a property of type y"},
         riserObject("without = [\"Owner\"]")},
        {Kind::propertyMissing,
         "all",
         riserObject("empty = true"),
         {"error: property-missing: object riser/r1: the object has no properties; expected the 14 "
          "properties of cemCIR"},
         riserObject("empty = false")},
        // An object that answers with an error is not judged by its properties.
        {Kind::propertyMissing,
         "hidden",
         "faults = [\"object riser/r1 after 1\"]\n" + riserObject("empty = true"),
         {"error: property-missing: object riser/r1: the object has no properties; expected the 14 "
          "properties of cemCIR"},
         "faults = [\"object riser/r1\"]\n" + riserObject("empty = true")},
        {Kind::propertyTypeDiffers,
         "module",
         properties("DeviceId = { signature = \"u\", value = 0x1101 }"),
         {"error: property-type-differs: object riser/r1 property DeviceId: the type is u; "
          "expected "
          "q"},
         properties("DeviceId = { signature = \"q\", value = 0x1101 }")},
        {Kind::propertyTypeDiffers,
         "info_flag",
         "[service.info]\nFRUreadComplete = 1",
         {"error: property-type-differs: object info property FRUreadComplete: the type is q; "
          "expected b"},
         "[service.info]\nFRUreadComplete = true"},
        {Kind::propertyTypeDiffers,
         "info_number",
         "[service.info]\nCardCount = \"30\"",
         {"error: property-type-differs: object info property CardCount: the type is s; expected "
          "q"},
         "[service.info]\nCardCount = 30"},
        {Kind::propertyTypeDiffers,
         "hidden",
         "faults = [\"bus absent\"]\nname = \"no bus\"\n" + nodeWith("picpwr = 64"),
         {"error: picpwr-out-of-range: node PUCK 3 'p': the PICPWR ID is 64; expected 1 to 63, or "
          "0 "
          "for no slot"},
         "faults = [\"service absent\"]\n[service.info]\nCardCount = \"30\""},
        {Kind::propertyValueDiffers,
         "number",
         properties("DeviceId = 0x1102"),
         {"error: property-value-differs: object riser/r1 property DeviceId: the value is 4354; "
          "expected 4353, as the payload of slot 5 says"},
         properties("DeviceId = 0x1101")},
        {Kind::propertyValueDiffers,
         "end_point",
         properties("EndPoint0 = { signature = \"(yyyyyy)\", value = [16, 0, 0, 0, 0, 1] }"),
         {"error: property-value-differs: object riser/r1 property EndPoint0: the value is (16, 0, "
          "0, 0, 0, 1); expected (16, 0, 0, 0, 0, 0), as the payload of slot 5 says"},
         // The module has one end point: the payload does not tell what is shown of the others.
         properties("EndPoint1 = { signature = \"(yyyyyy)\", value = [16, 0, 0, 0, 0, 1] }")},
        {Kind::propertyValueDiffers,
         "checksum",
         properties("checksum = { signature = \"y\", value = 1 }"),
         {"error: property-value-differs: object riser/r1 property checksum: the value is 1; "
          "expected 45, as the payload of slot 5 says"},
         properties("checksum = { signature = \"y\", value = 45 }")},
        // The payload has other bytes than the service has read.
        {Kind::propertyValueDiffers,
         "payload",
         riserWith("[override.raw]\n0x2A09 = 10"),
         {"error: property-value-differs: object riser/r1 property DeviceVer: the value is 9; "
          "expected 10, as the payload of slot 5 says"},
         riserWith("[override.raw]\n0x2A09 = 9")},
        {Kind::objectWithoutSlot,
         "lone",
         lone("flop/f1"),
         {"warning: object-without-slot: object flop/f1: no slot has the module of this object; "
          "expected a slot with a DSTAT of 1 to 3"},
         lone("other/f1")},
        {Kind::objectWithoutSlot,
         "absent",
         "[[slot]]\nid = 5\n[slot.module]\ntype = \"riser\"\nobject = \"r1\"",
         {"warning: absent-slot-with-payload: slot 5: DSTAT is 0, and there is a payload of 16 "
          "bytes; expected no payload, or a DSTAT of 1 to 3",
          "warning: object-without-slot: object riser/r1: DSTAT of slot 5, its slot, is 0; "
          "expected "
          "a slot with a DSTAT of 1 to 3"},
         "[[slot]]\nid = 5\ndstat = 1\n[slot.module]\ntype = \"riser\"\nobject = \"r1\""},
        {Kind::objectWithoutSlot,
         "hidden",
         lone("flop/f1"),
         {"warning: object-without-slot: object flop/f1: no slot has the module of this object; "
          "expected a slot with a DSTAT of 1 to 3"},
         "faults = [\"object flop\"]\n" + lone("flop/f1")},
        // The module of the object may be the one that cannot be read.
        {Kind::objectWithoutSlot,
         "of_a_hidden_slot",
         "faults = [\"raw-read 0x1038 once\", \"named-read PICPWR_5_DSTAT\"]\n" + lone("flop/f1"),
         {"warning: object-without-slot: object flop/f1: no slot has the module of this object; "
          "expected a slot with a DSTAT of 1 to 3"},
         "faults = [\"raw-read 0x1038\", \"named-read PICPWR_5_DSTAT\"]\n" + lone("flop/f1")},
        {Kind::slotWithoutObject,
         "of_a_class",
         riserWith(other),
         {"warning: slot-without-object: slot 6: the service has no object of the module, whose "
          "class is 0x11; expected an object, like riser/r1 of slot 5"},
         riserWith(other + otherObject)},
    };
}

} // namespace zolt_board::test
