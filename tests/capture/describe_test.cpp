// A board that is loaded from a capture's description shows the same reads again.
#include "capture/describe.h"

#include "board/board_loader.h"
#include "board/cpld_map.h"
#include "tests/capture/observed_board.h"
#include "tests/support/random_cases.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

namespace capture {
namespace {

const Head head{.date = "2026-11-22 03:00 UTC", .version = "1"};

std::string description(const board::Board& board) {
    return describe(test::observe(board), head);
}

// Returns the first read that differs between two observations, for the message of a failure.
std::string firstDifference(const Observation& before, const Observation& after) {
    for (const auto& [name, reading] : before.named) {
        if (after.named.at(name) != reading) {
            return name;
        }
    }
    for (const auto& [address, reading] : before.rawBytes) {
        const auto found = after.rawBytes.find(address);
        if (found == after.rawBytes.end() || found->second != reading) {
            return "raw " + std::to_string(address);
        }
    }
    for (std::size_t i = 0; i < before.payloads.size() && i < after.payloads.size(); ++i) {
        if (before.payloads[i] != after.payloads[i]) {
            return "payload of slot " + std::to_string(before.payloads[i].slot);
        }
    }
    for (std::size_t i = 0; i < before.topology.size(); ++i) {
        if (before.topology[i] != after.topology[i]) {
            return "device type " + std::to_string(i);
        }
    }
    return before.service == after.service ? "nothing of these" : "the service";
}

void expectSameReads(const board::Board& board) {
    const Observation before = test::observe(board);
    const std::string text = describe(before, head);
    try {
        const Observation after = test::observe(board::parseBoard(text, "capture.toml"));
        EXPECT_TRUE(before == after) << firstDifference(before, after) << " differs in\n" << text;
        EXPECT_EQ(describe(after, head), text);
    } catch (const board::BoardError& error) {
        FAIL() << error.what() << "\n" << text;
    }
}

board::Board boardFrom(const std::string& name) {
    std::ifstream file(std::string(BOARDS) + "/" + name + ".toml");
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return board::parseBoard(text, name);
}

TEST(Describe, theBoardsThatComeWithTheToolsShowTheSameReads) {
    for (const char* const name : {"demo", "raw_only", "hostile"}) {
        SCOPED_TRACE(name);
        expectSameReads(boardFrom(name));
    }
}

struct Small {
    const char* what;
    const char* board;
};

const Small smallBoards[] = {
    {"an empty board", ""},
    {"a slot whose name and register differ",
     "[[slot]]\nid = 3\ndstat = 2\n[override.named]\nPICPWR_3_DSTAT = 7\n"},
    {"an absent slot with flags and a payload",
     "[[slot]]\nid = 3\ndpen = true\n[slot.module]\ndevice_id = 7\n"},
    {"a name that delivers nothing", "[override.named]\nPICPWR_3_DSTAT = []\n"},
    {"a name that delivers more bytes", "[override.named]\n1C_CARD_PRES = \"01 02 03\"\n"},
    {"bits of a register that are no field", "[override.raw]\n0x1000 = 0x07\n0x1400 = 0x30\n"},
    {"no HAL", "faults = [\"named-read *\", \"hal-object PICPWR_PAYLOADS\"]\n"
               "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"},
    {"a HAL that fails with another status",
     "faults = [\"named-read PICPWR_5_* status 7\", \"hal-read PICPWR_PAYLOADS status -5\"]\n"
     "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"},
    {"registers that cannot be read at all",
     "faults = [\"named-read PICPWR_5_*\", \"raw-read 0x1038-0x1045 status -110\"]\n"},
    {"a payload that can be read neither way",
     "faults = [\"hal-read PICPWR_PAYLOADS\", \"raw-read 0x2A11\"]\n"
     "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"},
    {"bulk reads of which some fail",
     "faults = [\"hal-read PICPWR_PAYLOADS 0x0201-0x0377 status 9\"]\n"
     "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"
     "[[slot]]\nid = 6\ndstat = 1\npayload_offset = 0x200\nmodule.device_id = 4\n"
     "[[slot]]\nid = 7\ndstat = 1\npayload_offset = 0x400\nmodule.device_id = 5\n"},
    {"short bulk reads", "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"
                         "[hal.PICPWR_PAYLOADS]\nmost_bytes = 14\n"},
    {"bulk reads without bytes", "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n"
                                 "[hal.PICPWR_PAYLOADS]\nmost_bytes = 0\n"},
    {"an interrupt callback that cannot be removed",
     "[[slot]]\nid = 5\ndstat = 1\n"
     "[hal.PICPWR_PAYLOADS]\ninterrupt_callback = true\nunregister_status = -4\n"},
    {"a payload offset beyond the block", "[[slot]]\nid = 5\ndstat = 1\npayload_offset = 0xFFFF\n"},
    {"a payload at the end of the block", "[[slot]]\nid = 5\ndstat = 1\npayload_offset = 0x5FEF\n"
                                          "payload = \"00 1A 02\"\n"},
    {"two slots with one payload",
     "[[slot]]\nid = 5\ndstat = 1\nmodule.device_id = 3\n[[slot]]\nid = 6\ndstat = 1\n"},
    {"a payload that is longer than it may be",
     "[[slot]]\nid = 5\ndstat = 1\npayload = \"00 01 FF 00 12\"\n"},
    {"a payload and an OEM area that are no module",
     "[[slot]]\nid = 5\ndstat = 1\npayload = \"00 1A 02 99 00 00 00 00 00 00 00 00 00 00 00 00\"\n"
     "oem_area = \"05 01 09 09 09\"\n"},
    {"a riser mapping that is cut off", "[riser_map]\nbytes = \"01 02 03\"\n"},
    {"a riser mapping without bytes", "[riser_map]\nbytes = []\n"},
    {"a riser mapping that is read raw until a register fails",
     "faults = [\"named-read RISER_SLOT_AMP_BLOB\", \"raw-read 0x8A20 status 3\"]\n"
     "[riser_map]\nconfig_major = 3\ndescription = \"cut\"\n"},
    {"a text that is no UTF-8", "[riser_map]\nbytes = \"01 02 FF FE\"\n"},
    {"no bus", "faults = [\"bus absent\"]\n"},
    {"no service", "faults = [\"service absent\"]\n"},
    {"objects that differ from their modules", R"(
[[slot]]
id = 5
dstat = 1
[slot.module]
type = "puck"
object = "puck1"
device_class = 0x1A
device_id = 0x1234
vendor_id = 0x5678
[[slot]]
id = 6
dstat = 1
[slot.module]
type = "puck"
object = "puck2"
device_class = 0x1A
device_id = 0x1235
vendor_id = 0x5678
[[service.object]]
path = "puck/puck1"
interface = "puckCIR"
without = ["DeviceVer"]
[service.object.properties]
VendorId = { signature = "s", value = "none" }
[[service.object]]
path = "puck/puck2"
interface = "puckCIR"
empty = true
[[service.object]]
path = "riser/nobody"
interface = "cemCIR"
[service.object.properties]
Flag = true
Many = { signature = "a{sv}", value = [["key", ["as", ["a", "b"]]]] }
Real = { signature = "d", value = 0.5 }
Large = { signature = "t", value = -1 }
[service.info]
Count = 7
FRUreadComplete = false
[[service.order]]
path = "rfc"
interface = "org.freedesktop.DBus.ObjectManager"
action = "error"
error = "org.freedesktop.DBus.Error.AccessDenied"
text = "not \"for\" you\n"
)"},
    {"a topology with every field", R"(
[[i2c.index_node]]
device_type = "PUCK"
index = 3
name = "a name of 16 byt"
discoverable = 7
physical_bus = 30
picpwr = 4
is_sl_src = true
sl_src = 2
hw_uid = 0x12
slot_number = -4
slot_type = 5
bay_id = 6
sub_node_count = 9
[[i2c.index_node]]
device_type = "PUCK"
name = [0xFF, 0x41]
physical_bus = -7
[[i2c.index_node]]
device_type = "PUCK"
physical_bus = 1048576
[[i2c.index_node.sub]]
sub_index = -1
name = "sub"
discoverable = true
sub_node_count = 2
[[i2c.type]]
device_type = 5
status = 3
[[i2c.type]]
device_type = 6
root = "none"
[[i2c.type]]
device_type = 7
root = "empty"
[[i2c.type]]
device_type = 8
status = -2
root = "empty"
)"},
};

TEST(Describe, smallBoardsShowTheSameReads) {
    for (const Small& small : smallBoards) {
        SCOPED_TRACE(small.what);
        expectSameReads(board::parseBoard(small.board, "small.toml"));
    }
}

TEST(Describe, aSlotReadsAsIfWrittenByHand) {
    EXPECT_EQ(description(board::parseBoard(R"(
[[slot]]
id = 5
dstat = 3
dpen = true
module_class_index = 2
dsl_ids = [0x12, 0, 0x14]
[slot.module]
type = "riser"
object = "riser1"
format_version = 2
device_class = 0x01
device_id = 0x0B01
vendor_id = 0xF1A0
target_address = 0x41
[[slot.module.end_point]]
hot_plug = true
lane_width = 3
[[slot.module.oem]]
type = 1
src_id = 0x22
dst_id = 0x62
)",
                                            "b")),
              R"(# Captured 2026-11-22 03:00 UTC by zolt_capture 1.
#
# PICPWR and control registers, payloads and OEM areas, the riser slot mapping, the I2C
# topology, and what the service publishes. A capture does not hold the memories of I2C
# devices, and holds only the node properties that were asked for.

[[slot]]
id = 5
dstat = 3
dpen = true
module_class_index = 2
payload_offset = 0x0000
dsl_ids = [0x12, 0x00, 0x14]
[slot.module]
type = "riser"
object = "riser1"
format_version = 2
device_class = 0x01
device_id = 0x0B01
vendor_id = 0xF1A0
target_address = 0x41
[[slot.module.end_point]]
hot_plug = true
lane_width = 3
[[slot.module.oem]]
type = 1
src_id = 0x22
dst_id = 0x62
)");
}

// Returns the description without its head.
std::string bodyOf(const Observation& observation) {
    const std::string text = describe(observation, head);
    return text.substr(text.find("\n\n") + 2);
}

TEST(Describe, repliesOfAnotherTypeBecomeOrders) {
    Observation observation;
    observation.service.reach = ServiceReading::Reach::service;
    observation.service.managers = {
        {.path = "/com/tesk/bmc/zolt/bp", .other = OtherReply{"y", board::Value(7)}},
        {.path = "/com/tesk/bmc/zolt/rfc", .other = OtherReply{}},
        {.path = "/com/tesk/bmc/zolt/bi", .other = OtherReply{"yy", {}}},
    };
    EXPECT_EQ(bodyOf(observation), R"([[service.order]]
path = "bp"
interface = "org.freedesktop.DBus.ObjectManager"
action = "reply"
signature = "y"
value = 7

[[service.order]]
path = "rfc"
interface = "org.freedesktop.DBus.ObjectManager"
action = "reply"
)");
    EXPECT_EQ(failuresIn(observation), (std::vector<std::string>{
                                           "/com/tesk/bmc/zolt/bp: the reply has the type 'y'",
                                           "/com/tesk/bmc/zolt/rfc: the reply has the type ''",
                                           "/com/tesk/bmc/zolt/bi: the reply has the type 'yy'",
                                       }));
}

TEST(Describe, nodePropertiesAndTheirFailures) {
    Observation observation;
    observation.nodeProperties = {
        {.bus = 3, .target = 0, .id = 8, .opened = true, .value = 4},
        {.bus = 3, .target = 0x40, .id = 1, .opened = true, .value = 12},
        {.bus = 3, .target = 0x41, .id = 2, .error = 121, .opened = true},
        {.bus = 3, .target = 0x42, .id = 1, .error = 2, .opened = true}, // read from 0x40
        {.bus = 9, .target = 0, .id = 8, .error = 13},
        {.bus = 9, .target = 0x50, .id = 8, .error = 13},
    };
    EXPECT_EQ(bodyOf(observation),
              R"(faults = [
    "i2c-ioctl 3 get-property 2 error EREMOTEIO",
    "i2c-open 9 error EACCES",
    "bus absent",
]

[[i2c.bus]]
number = 3
properties = { 8 = 4 }
[[i2c.bus.device]]
address = 0x40
size = 1
properties = { 1 = 12 }
)");
}

TEST(Describe, namesEverythingThatCouldNotBeReadOrKept) {
    Observation observation;
    observation.named["PICPWR_5_DSTAT"] = {.status = -7};
    observation.rawBytes[0x1038] = {.status = -5};
    observation.topology.resize(3);
    observation.topology[2].isCut = true;
    observation.nodeProperties = {{.bus = 9, .error = 13},
                                  {.bus = 9, .target = 64, .id = 1, .error = 2, .opened = true},
                                  {.bus = 9, .target = 65, .id = 1, .opened = true}};
    observation.service.reach = ServiceReading::Reach::service;
    observation.service.info = {.path = "/info", .interface = "i", .error = BusError{"a.b", "no"}};
    observation.service.managers = {{.path = "/bp", .isCut = true}};
    observation.service.objects = {
        {.path = "/bp/1", .interface = "x.y", .unkept = {{"/bp/1", "x.y", "File", "h"}}}};
    EXPECT_EQ(failuresIn(observation), (std::vector<std::string>{
                                           "named-read PICPWR_5_DSTAT status -7",
                                           "raw-read 0x1038 status -5",
                                           "device type 2: has more nodes than a capture keeps",
                                           "property 9:0:0: EACCES",
                                           "property 9:64:1: ENOENT",
                                           "/info: a.b: no",
                                           "/bp: has more objects than a capture keeps",
                                           "/bp/1: x.y.File cannot be kept: its type is 'h'",
                                       }));
    observation = {};
    observation.service.reach = ServiceReading::Reach::noService;
    EXPECT_EQ(failuresIn(observation),
              std::vector<std::string>{"the service: is not on the system bus"});
    observation.service.reach = ServiceReading::Reach::noBus;
    EXPECT_EQ(failuresIn(observation),
              std::vector<std::string>{"the system bus: cannot be reached"});
}

// Boards whose bytes, faults and payloads are drawn at random.
board::Board randomBoard(unsigned seed) {
    std::mt19937 random(seed);
    const auto draw = [&](unsigned lowest, unsigned highest) {
        return std::uniform_int_distribution<unsigned>(lowest, highest)(random);
    };
    board::Board board = boardFrom(draw(0, 1) == 0 ? "demo" : "hostile");
    for (unsigned i = draw(0, 12); i > 0; --i) {
        board.rawOverrides[static_cast<std::uint16_t>(draw(0, 3) == 0 ? draw(0x13BE, 0x2607)
                                                                      : draw(0x1000, 0x1371))] =
            static_cast<std::uint8_t>(draw(0, 255));
    }
    for (unsigned i = draw(0, 12); i > 0; --i) {
        board.rawOverrides[static_cast<std::uint16_t>(draw(0x2A01, 0x3600))] =
            static_cast<std::uint8_t>(draw(0, 255));
    }
    for (unsigned i = draw(0, 6); i > 0; --i) {
        const char* const names[] = {"_DSTAT", "_DBYP", "_MOD_CLASS", "_PAYLOAD_OFFSET"};
        Bytes value(draw(0, 3));
        for (std::uint8_t& byte : value) {
            byte = static_cast<std::uint8_t>(draw(0, 255));
        }
        board.namedOverrides["PICPWR_" + std::to_string(draw(1, 63)) + names[draw(0, 3)]] = value;
    }
    for (unsigned i = draw(0, 5); i > 0; --i) {
        const std::string status = " status " + std::to_string(draw(1, 3));
        const unsigned slot = draw(1, 63);
        const unsigned address = draw(0x1000, 0x1371);
        const std::string rules[] = {
            "named-read PICPWR_" + std::to_string(slot) + "_*" + status,
            "named-read *_FRU_WP" + status,
            "raw-read " + std::to_string(address) + "-" + std::to_string(address + draw(0, 40)) +
                status,
            "raw-read " + std::to_string(draw(0x2A01, 0x3600)) + status,
            "hal-read PICPWR_PAYLOADS" + status,
            "hal-read PICPWR_PAYLOADS " + std::to_string(draw(1, 700)) + status,
            "sysinfo " + std::to_string(draw(0, 164)) + status,
        };
        board.faults.push_back(board::parseFaultRule(rules[draw(0, 6)]));
    }
    if (draw(0, 5) == 0) {
        board.halObjects[std::string(board::payloadBlockName)].mostBytes = draw(0, 375);
    }
    return board;
}

TEST(Describe, randomBoardsShowTheSameReads) {
    for (unsigned seed = 1; seed <= zolt::test::randomCases(40) && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        expectSameReads(randomBoard(seed));
    }
}

} // namespace
} // namespace capture
