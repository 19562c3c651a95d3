#include "zolt_board/show.h"

#include "board/board_loader.h"
#include "tests/zolt_board/riser_slot.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt_board {
namespace {

const std::string twoSlots = std::string(R"(
name = "two slots"
faults = ["named-read PICPWR_2_DSTAT status 7", "raw-read 0x100E-0x100F", "bus absent"]
)") + riserSlot + "[[slot]]\nid = 1\ndstat = 1\n";

// Nodes behind nodes, devices, and two nodes of one bus.
constexpr const char* buses = R"(
name = "buses"
[[slot]]
id = 63
dbyp = true
payload = "FF FF"
[[i2c.bus]]
number = 5
[[i2c.bus.device]]
address = 0x50
memory = "01"
read_only = true
[[i2c.bus.device]]
address = 0x51
node_type = "PSU"
node_index = 3
[[i2c.bus]]
number = 9
[[i2c.index_node]]
device_type = "PICPWR"
index = 1
name = "p1"
physical_bus = 20
parent = 5
discoverable = true
[[i2c.index_node.sub]]
sub_index = 7
name = "mux"
[[i2c.index_node]]
device_type = 60
index = -1
physical_bus = 21
parent = 20
[[i2c.index_node]]
device_type = "BP"
name = [0xFF, 0x41]
physical_bus = 9
[[i2c.index_node]]
device_type = "BP"
index = 1
physical_bus = 9
[[i2c.type]]
device_type = "PSU"
status = -7
[service.info]
Ready = true
[[service.object]]
path = "riser/extra"
interface = "one"
[service.object.properties]
A = 1
[[service.object]]
path = "riser/extra"
interface = "two"
[[service.order]]
path = "riser/extra"
action = "error"
[[service.order]]
action = "leave"
[riser_map]
config_major = 3
description = "a\u202Eb"
[[riser_map.record]]
location = "R\n1"
part_number = "P"
slots = [1, 2]
payload_size = 9
[[riser_map.record.dsl]]
id = 0x12
type = 1
sl_index = 4
)";

std::string shown(void (*show)(const board::Board&, Output&), const std::string& description,
                  Output output = {}) {
    show(board::parseBoard(description, "board.toml"), output);
    return output.text;
}

TEST(ShowSummary, countsAndListsTheSlots) {
    EXPECT_EQ(shown(showSummary, twoSlots),
              "board      two slots\n"
              "slots      61 empty, 1 with dstat 1, 0 with dstat 2, 1 with dstat 3\n"
              "modules    1 of class 0x00\n"
              "           1 of class 0x11 (riser)\n"
              "missing    the payload of slot 1\n"
              "           the riser slot mapping\n"
              "           all I2C nodes\n"
              "           the system bus\n"
              "faults     3 rules\n"
              "\n"
              "slot  dstat  flags  class  index  offset  payload  oem  end points  object\n"
              "   1      1  -      0x00       0  0x0000        -    -           -  -\n"
              "   2      3  dpen   0x11       0  0x0000       24    6           1  riser/r1\n");
}

TEST(ShowSummary, ofAnEmptyBoardHasNoTable) {
    EXPECT_EQ(shown(showSummary, ""),
              "slots      63 empty, 0 with dstat 1, 0 with dstat 2, 0 with dstat 3\n"
              "missing    the riser slot mapping\n"
              "           all I2C nodes\n");
}

TEST(ShowSummary, tellsAllThatIsUnusual) {
    EXPECT_EQ(shown(showSummary, buses),
              "board      buses\n"
              "slots      63 empty, 0 with dstat 1, 0 with dstat 2, 0 with dstat 3\n"
              "modules    1 of class 0xFF\n"
              "missing    the object of slot 63\n"
              "service    2 orders\n"
              "\n"
              "slot  dstat  flags  class  index  offset  payload  oem  end points  object\n"
              "  63      0  dbyp   0xFF       0  0x0000        2    -           -  -\n");
    EXPECT_EQ(shown(showSummary, R"(
faults = ["hal-object PICPWR_PAYLOADS", "service absent"]
[[slot]]
id = 4
dstat = 1
[[slot]]
id = 3
dstat = 2
[override.named]
PICPWR_3_DSTAT = 7
[override.raw]
0x1000 = [1, 2]
)"),
              "slots      61 empty, 1 with dstat 1, 1 with dstat 2, 0 with dstat 3\n"
              "modules    2 of class 0x00\n"
              "missing    the payloads of slots 3, 4\n"
              "           the riser slot mapping\n"
              "           all I2C nodes\n"
              "           the HAL object PICPWR_PAYLOADS\n"
              "           the service\n"
              "faults     2 rules\n"
              "overrides  1 name, 2 raw registers\n"
              "\n"
              "slot  dstat  flags  class  index  offset  payload  oem  end points  object\n"
              "   3      2  -      0x00       0  0x0000        -    -           -  -\n"
              "   4      1  -      0x00       0  0x0000        -    -           -  -\n");
}

TEST(ShowSummary, aThingThatIsMissingForATimeIsNotMissing) {
    EXPECT_EQ(shown(showSummary, R"(faults = ["hal-object PICPWR_PAYLOADS once",
"hal-object PICPWR_PAYLOADS after 1", "hal-object PICPWR_PAYLOADS delay 1s"])"),
              "slots      63 empty, 0 with dstat 1, 0 with dstat 2, 0 with dstat 3\n"
              "missing    the riser slot mapping\n"
              "           all I2C nodes\n"
              "faults     3 rules\n");
}

TEST(ShowSummary, hasColoursWhereTheyAreWanted) {
    EXPECT_EQ(shown(showSummary, "[[slot]]\nid = 1\n[slot.module]\ntype = \"bp\"\nobject = \"b\"\n",
                    {.colour = true}),
              "\x1B[1mslots\x1B[0m      63 empty, 0 with dstat 1, 0 with dstat 2, 0 with dstat 3\n"
              "\x1B[1mmodules\x1B[0m    1 of class 0x00 (bp)\n"
              "\x1B[1mmissing\x1B[0m    \x1B[31mthe riser slot mapping\x1B[0m\n"
              "           \x1B[31mall I2C nodes\x1B[0m\n"
              "\n"
              "\x1B[1mslot  dstat  flags  class  index  offset  payload  oem  end points  object"
              "\x1B[0m\n"
              "   1      0  -      0x00       0  0x0000       16    -           0  "
              "\x1B[36mbp/b\x1B[0m\n");
}

TEST(ShowTree, drawsModulesWithTheirParts) {
    EXPECT_EQ(shown(showTree, twoSlots),
              "two slots\n"
              "|- slots\n"
              "|  |- slot 1: dstat 1, class 0x00, index 0\n"
              "|  `- slot 2: dstat 3, dpen, class 0x11, index 0\n"
              "|     |- links 0x12\n"
              "|     |- payload at 0x0000, 24 bytes: format_version 1, device_class 0x11, "
              "vendor_id 0xF1A0\n"
              "|     |  `- end point 1: type 1\n"
              "|     |- OEM area, 6 bytes\n"
              "|     |  `- descriptor of type 3: slot_presence 0xA5\n"
              "|     `- object riser/r1\n"
              "|- service\n"
              "|  |- info: pcardInfo, 2 properties\n"
              "|  `- riser/r1: cemCIR, 14 properties\n"
              "`- faults\n"
              "   |- named-read PICPWR_2_DSTAT status 7\n"
              "   |- raw-read 0x100E-0x100F\n"
              "   `- bus absent\n");
}

TEST(ShowTree, drawsNodesBehindTheirBuses) {
    EXPECT_EQ(shown(showTree, buses, {.utf8 = true}),
              "buses\n"
              "├─ slots\n"
              "│  └─ slot 63: dstat 0, dbyp, class 0xFF, index 0\n"
              "│     └─ payload at 0x0000, 2 bytes: not the bytes of a module\n"
              "├─ riser slot mapping: 'a\\xE2\\x80\\xAEb', config_major 3\n"
              "│  └─ record of picpwr 0, location 'R\\n1', part number 'P', 1 card slot; "
              "states payload_size 9\n"
              "│     └─ link 0x12: type 1, sl_index 4\n"
              "├─ I2C\n"
              "│  ├─ BP 0 '\\xFFA'\n"
              "│  │  └─ /dev/i2c-9\n"
              "│  ├─ BP 1 ''\n"
              "│  │  └─ /dev/i2c-9, shown above\n"
              "│  ├─ /dev/i2c-5\n"
              "│  │  ├─ device 0x50, 1 byte of memory, read only\n"
              "│  │  ├─ device 0x51, node PSU 3\n"
              "│  │  └─ PICPWR 1 'p1', discoverable\n"
              "│  │     ├─ sub node 7 'mux'\n"
              "│  │     └─ /dev/i2c-20\n"
              "│  │        └─ type 60 -1 ''\n"
              "│  │           └─ /dev/i2c-21\n"
              "│  └─ PSU: the parser fails with status -7\n"
              "└─ service\n"
              "   ├─ info: pcardInfo, 1 property\n"
              "   ├─ riser/extra\n"
              "   │  ├─ one, 1 property\n"
              "   │  └─ two, 0 properties\n"
              "   ├─ order: riser/extra answers org.freedesktop.DBus.Error.Failed\n"
              "   └─ order: any object leaves the bus\n");
}

TEST(ShowTree, drawsANodeBehindItselfOnce) {
    EXPECT_EQ(shown(showTree, "[[i2c.bus]]\nnumber = 7\n[[i2c.index_node]]\ndevice_type = \"BP\"\n"
                              "physical_bus = 7\nparent = 7\n"),
              "board\n"
              "|- I2C\n"
              "|  `- BP 0 ''\n"
              "|     `- /dev/i2c-7\n"
              "`- service\n"
              "   `- info: pcardInfo, 2 properties\n");
}

TEST(ShowTree, statesWhatARecordSaysWrongly) {
    EXPECT_EQ(
        shown(showTree, R"(
[[slot]]
id = 1
[slot.module]
static_payload_size = 9
num_end_points = 3
checksum = 1
oem_area_size = 200
[[slot.module.oem]]
type = 3
size = 0
[[slot]]
id = 2
[slot.module]
device_class = 0x2A
[slot.module.backplane]
last_slot = 3
)"),
        "board\n"
        "|- slots\n"
        "|  |- slot 1: dstat 0, class 0x00, index 0\n"
        "|  |  |- payload at 0x0000, 16 bytes; states static_payload_size 9, num_end_points 3, "
        "checksum 1\n"
        "|  |  `- OEM area, 6 bytes; states oem_area_size 200\n"
        "|  |     `- descriptor of type 3; states size 0\n"
        "|  `- slot 2: dstat 0, class 0x2A, index 0\n"
        "|     `- payload at 0x0017, 24 bytes: device_class 0x2A\n"
        "|        `- backplane: last_slot 3\n"
        "`- service\n"
        "   `- info: pcardInfo, 2 properties\n");
}

TEST(ShowTree, beyondAsciiThereAreEscapesWithoutUtf8) {
    constexpr const char* description = "name = \"Gr\u00F6\u00DFe \\u009B\"\n";
    constexpr const char* rest = "- service\n   `- info: pcardInfo, 2 properties\n";
    EXPECT_EQ(shown(showTree, description),
              std::string("Gr\\xC3\\xB6\\xC3\\x9Fe \\xC2\\x9B\n`").append(rest));
    EXPECT_EQ(shown(showTree, description, {.utf8 = true}),
              "Gr\u00F6\u00DFe \\xC2\\x9B\n"
              "└─ service\n"
              "   └─ info: pcardInfo, 2 properties\n");
}

} // namespace
} // namespace zolt_board
