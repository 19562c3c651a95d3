#include "board/overlay.h"

#include <gtest/gtest.h>

#include <sstream>

namespace board {
namespace {

std::string textOf(const toml::table& table) {
    std::ostringstream text;
    text << toml::json_formatter(table);
    return text.str();
}

std::string laid(const char* over, const char* base) {
    toml::table table = toml::parse(over, std::string("over"));
    layOver(table, toml::parse(base, std::string("base")), nullptr);
    return textOf(table);
}

struct OverlayCase {
    const char* base;
    const char* over;
    const char* expected;
};

void expectAll(std::initializer_list<OverlayCase> cases) {
    for (const auto& [base, over, expected] : cases) {
        EXPECT_EQ(laid(over, base), textOf(toml::parse(expected)))
            << "base: " << base << "\nover: " << over;
    }
}

TEST(Overlay, takesTheRestOfATableOver) {
    expectAll({
        {"name = 'b'", "", "name = 'b'"},
        {"name = 'b'", "name = 'o'", "name = 'o'"},
        {"", "name = 'o'", "name = 'o'"},
        {"[riser_map]\nconfig_major = 1\nconfig_minor = 2", "[riser_map]\nconfig_minor = 3",
         "[riser_map]\nconfig_major = 1\nconfig_minor = 3"},
        {"[hal.PICPWR_PAYLOADS]\nmost_bytes = 5\nunregister_status = 1",
         "[hal.PICPWR_PAYLOADS]\nunregister_status = 2",
         "[hal.PICPWR_PAYLOADS]\nmost_bytes = 5\nunregister_status = 2"},
        {"[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x2A\n"
         "[slot.module.backplane]\nbay_id = 1\nlast_slot = 2",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_id = 7\n[slot.module.backplane]\nbay_id = 3",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x2A\ndevice_id = 7\n"
         "[slot.module.backplane]\nbay_id = 3\nlast_slot = 2"},
        // An unknown table, or a value of a wrong kind, goes to the loader as it is.
        {"x = 1\n[other]\na = 1", "[other]\nb = 1", "x = 1\n[other]\nb = 1"},
        {"[[slot]]\nid = 1", "slot = 7", "slot = 7"},
        {"slot = 7", "[[slot]]\nid = 1", "[[slot]]\nid = 1"},
        {"[riser_map]\nrecords = 1", "riser_map = 7", "riser_map = 7"},
    });
}

// Each kind of element is found by its own keys; the elements of the base keep their order, and new
// ones follow.
TEST(Overlay, findsElements) {
    expectAll({
        {"[[slot]]\nid = 1\ndstat = 1\n[[slot]]\nid = 2\ndstat = 2\n[[slot]]\nid = 3",
         "[[slot]]\nid = 9\n[[slot]]\nid = 2\ndbyp = true",
         "[[slot]]\nid = 1\ndstat = 1\n[[slot]]\nid = 2\ndstat = 2\ndbyp = true\n[[slot]]\nid = 3\n"
         "[[slot]]\nid = 9"},
        {"karn = [{ id = 1, fru_wp = true }, { id = 2 }]",
         "[[karn]]\nid = 2\npwr_policy = 3\n[[karn]]\nfru_wp = false",
         "[[karn]]\nid = 1\nfru_wp = true\n[[karn]]\nid = 2\npwr_policy = 3\n"
         "[[karn]]\nfru_wp = false"},
        // A class with a single instance needs no number.
        {"[[remote_fan]]\npwr_policy = 1", "[[remote_fan]]\nid = 1\npicpwr_index = 2",
         "[[remote_fan]]\nid = 1\npwr_policy = 1\npicpwr_index = 2"},
        {"[[remote_fan]]\nid = 1\npwr_policy = 1", "[[remote_fan]]\npwr_policy = 2",
         "[[remote_fan]]\nid = 1\npwr_policy = 2"},
        {"[[riser_map.record]]\nhwuid = 1\n[[riser_map.record]]\npicpwr = 4\nhwuid = 2",
         "[[riser_map.record]]\npicpwr = 4\nlocation = 'X'\n[[riser_map.record]]\npicpwr = 0\n"
         "hwuid = 9",
         "[[riser_map.record]]\npicpwr = 0\nhwuid = 9\n"
         "[[riser_map.record]]\npicpwr = 4\nhwuid = 2\nlocation = 'X'"},
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\nid = 5\ntype = 1\nsl_index = 1\n"
         "[[riser_map.record.dsl]]\nid = 6\ntype = 1",
         "[[riser_map.record]]\n[[riser_map.record.dsl]]\nid = 5\nsl_index = 2",
         "[[riser_map.record]]\n[[riser_map.record.dsl]]\nid = 5\ntype = 1\nsl_index = 2\n"
         "[[riser_map.record.dsl]]\nid = 6\ntype = 1"},
        {"[[i2c.bus]]\nnumber = 5\n[[i2c.bus.device]]\naddress = 0x50\nsize = 2\nfill = 1\n"
         "[[i2c.bus.device]]\naddress = 0x51\nsize = 3",
         "[[i2c.bus]]\nnumber = 5\n[[i2c.bus.device]]\naddress = 0x51\nread_only = true\n"
         "[[i2c.bus]]\nnumber = 6",
         "[[i2c.bus]]\nnumber = 5\n[[i2c.bus.device]]\naddress = 0x50\nsize = 2\nfill = 1\n"
         "[[i2c.bus.device]]\naddress = 0x51\nsize = 3\nread_only = true\n[[i2c.bus]]\nnumber = 6"},
        {"[[i2c.index_node]]\ndevice_type = 'BP'\nindex = 1\nname = 'a'\n"
         "[[i2c.index_node]]\ndevice_type = 'PUCK'\nname = 'b'",
         "[[i2c.index_node]]\ndevice_type = 'Backplane'\nindex = 1\nbay_id = 2\n"
         "[[i2c.index_node]]\ndevice_type = 'PUCK'\nindex = 0\nbay_id = 3\n"
         "[[i2c.index_node]]\ndevice_type = 'PUCK'\nindex = 1",
         "[[i2c.index_node]]\ndevice_type = 'Backplane'\nindex = 1\nname = 'a'\nbay_id = 2\n"
         "[[i2c.index_node]]\ndevice_type = 'PUCK'\nindex = 0\nname = 'b'\nbay_id = 3\n"
         "[[i2c.index_node]]\ndevice_type = 'PUCK'\nindex = 1"},
        {"[[i2c.type]]\ndevice_type = 'BP'\nstatus = 1",
         "[[i2c.type]]\ndevice_type = 19\nroot = 'empty'",
         "[[i2c.type]]\ndevice_type = 19\nstatus = 1\nroot = 'empty'"},
        {"[[service.object]]\npath = 'riser/riser1'\ninterface = 'cemCIR'\nwithout = ['A']",
         "[[service.object]]\npath = '/com/tesk/bmc/zolt/riser/riser1'\n"
         "interface = 'com.tesk.bmc.zolt.cemCIR'\nempty = true\n"
         "[[service.object]]\npath = 'riser/riser1'\ninterface = 'other'",
         "[[service.object]]\npath = '/com/tesk/bmc/zolt/riser/riser1'\n"
         "interface = 'com.tesk.bmc.zolt.cemCIR'\nempty = true\nwithout = ['A']\n"
         "[[service.object]]\npath = 'riser/riser1'\ninterface = 'other'"},
        // An identity of a wrong type goes to the loader as it is.
        {"[[slot]]\nid = 1", "[[slot]]\nid = '1'", "[[slot]]\nid = 1\n[[slot]]\nid = '1'"},
        {"[[i2c.type]]\ndevice_type = 'BP'", "[[i2c.type]]\ndevice_type = 'BPP'",
         "[[i2c.type]]\ndevice_type = 'BP'\n[[i2c.type]]\ndevice_type = 'BPP'"},
    });
}

TEST(Overlay, findsElementsWithoutANumberByPosition) {
    const char* const module = "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x11\n"
                               "[[slot.module.end_point]]\ntype = 1\nlane_width = 4\n"
                               "[[slot.module.end_point]]\ntype = 2\nlane_width = 3\n"
                               "[[slot.module.oem]]\ntype = 3\nslot_presence = 1";
    expectAll({
        {module,
         "[[slot]]\nid = 1\n[[slot.module.end_point]]\nposition = 2\nlane_width = 1\n"
         "[[slot.module.end_point]]\ntype = 5\n[[slot.module.oem]]\nposition = 1\nsize = 9",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x11\n"
         "[[slot.module.end_point]]\ntype = 1\nlane_width = 4\n"
         "[[slot.module.end_point]]\ntype = 2\nlane_width = 1\n[[slot.module.end_point]]\ntype = "
         "5\n"
         "[[slot.module.oem]]\ntype = 3\nslot_presence = 1\nsize = 9"},
        // Positions count the elements of the base, those that are taken out included.
        {module,
         "[[slot]]\nid = 1\n[[slot.module.end_point]]\nposition = 1\nremove = true\n"
         "[[slot.module.end_point]]\nposition = 2\ntype = 7",
         "[[slot]]\nid = 1\n[slot.module]\ndevice_class = 0x11\n"
         "[[slot.module.end_point]]\ntype = 7\nlane_width = 3\n"
         "[[slot.module.oem]]\ntype = 3\nslot_presence = 1"},
        {"[[i2c.index_node]]\ndevice_type = 1\nsub = [{ name = 'a', sub_index = 1 }, { name = 'b' "
         "}]",
         "[[i2c.index_node]]\ndevice_type = 1\n[[i2c.index_node.sub]]\nposition = 1\nname = 'c'",
         "[[i2c.index_node]]\ndevice_type = 1\nsub = [{ name = 'c', sub_index = 1 }, { name = 'b' "
         "}]"},
        // The first order that matches a call applies, so new orders stand in front.
        {"[[service.order]]\npath = 'a'\n[[service.order]]\npath = 'b'",
         "[[service.order]]\npath = 'c'\n[[service.order]]\nposition = 2\ndelay_ms = 5\n"
         "[[service.order]]\npath = 'd'",
         "[[service.order]]\npath = 'c'\n[[service.order]]\npath = 'd'\n[[service.order]]\npath = "
         "'a'\n"
         "[[service.order]]\npath = 'b'\ndelay_ms = 5"},
    });
}

// The last rule that fits a call holds, so new rules follow.
TEST(Overlay, appendsFaults) {
    expectAll({
        {"faults = ['a', 'b']", "faults = ['c']", "faults = ['a', 'b', 'c']"},
        {"faults = ['a', 'b']", "faults = []", "faults = ['a', 'b']"},
        {"faults = 7", "faults = ['c']", "faults = ['c']"},
        {"faults = ['a']", "faults = 7", "faults = 7"},
        {"faults = ['a', 'b']", "remove = ['faults']\nfaults = ['c']", "faults = ['c']"},
    });
}

TEST(Overlay, changesNamedThings) {
    expectAll({
        {"[override.named]\nA = [1, 2]\nB = 2", "[override.named]\nA = 3\nremove = 4\nposition = 5",
         "[override.named]\nA = 3\nB = 2\nremove = 4\nposition = 5"},
        {"[override.named]\nA = 1\nB = 2", "[override.named]\nA = { remove = true }",
         "[override.named]\nB = 2"},
        {"[service.info]\nA = true\nremove = true", "[service.info]\nA = { remove = true }\nB = 1",
         "[service.info]\nB = 1\nremove = true"},
        {"[[service.object]]\npath = 'a'\ninterface = 'b'\n[service.object.properties]\nA = 1\nB = "
         "2",
         "[[service.object]]\npath = 'a'\ninterface = 'b'\n[service.object.properties]\n"
         "A = { remove = true }\nB = { signature = 'y', value = 1 }",
         "[[service.object]]\npath = 'a'\ninterface = 'b'\n[service.object.properties]\n"
         "B = { signature = 'y', value = 1 }"},
        {"[[i2c.bus]]\nnumber = 1\nproperties = { 8 = 1, 9 = 2, 0x0A = 3 }",
         "[[i2c.bus]]\nnumber = 1\nproperties = { 0x8 = 5, 10 = { remove = true } }",
         "[[i2c.bus]]\nnumber = 1\nproperties = { 0x8 = 5, 9 = 2 }"},
        {"[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\nproperties = { 1 = 1 }",
         "[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\nproperties = { 2 = 2, x = 3 }",
         "[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\nproperties = { 1 = 1, 2 = 2, x "
         "= 3 }"},
    });
}

TEST(Overlay, changesSingleRegisters) {
    const char* const base = "[override.raw]\n0x1000 = [1, 2, 3]\n8192 = '0A 0B'\n0xFFFF = 9";
    expectAll({
        {base, "[override.raw]\n0x1001 = 7\n",
         "[override.raw]\n0x1000 = 1\n0x1001 = 7\n0x1002 = 3\n0x2000 = 10\n0x2001 = 11\n0xFFFF = "
         "9"},
        {base, "[override.raw]\n4097 = [7, 8, 9]\n0x2001 = { remove = true }",
         "[override.raw]\n0x1000 = 1\n4097 = [7, 8, 9]\n0x2000 = 10\n0xFFFF = 9"},
        {base, "[override.raw]\n0x3000 = []",
         "[override.raw]\n0x1000 = 1\n0x1001 = 2\n0x1002 = 3\n0x2000 = 10\n0x2001 = 11\n0xFFFF = "
         "9\n"
         "0x3000 = []"},
        // A table with an error goes to the loader as it is.
        {"[override.raw]\n0x1000 = [1, 2]\n0x1001 = 3", "[override.raw]\n0x2000 = 1",
         "[override.raw]\n0x1000 = [1, 2]\n0x1001 = 3\n0x2000 = 1"},
        {"[override.raw]\n0xFFFF = [1, 2]", "[override.raw]\nx = 1",
         "[override.raw]\n0xFFFF = [1, 2]\nx = 1"},
        {"[override.raw]\n0x1000 = 'x'", "[override.raw]\n0x2000 = 256",
         "[override.raw]\n0x1000 = 'x'\n0x2000 = 256"},
    });
}

TEST(Overlay, takesThingsOut) {
    expectAll({
        {"[[slot]]\nid = 1\n[[slot]]\nid = 2", "[[slot]]\nid = 1\nremove = true",
         "[[slot]]\nid = 2"},
        // The last element takes the array with it.
        {"name = 'b'\n[[slot]]\nid = 1", "[[slot]]\nid = 1\nremove = true", "name = 'b'"},
        {"[[puck]]\nid = 3", "[[puck]]\nid = 3\nremove = true", ""},
        {"[[remote_fan]]\npwr_policy = 1", "[[remote_fan]]\nremove = true", ""},
        {"[[riser_map.record]]\npicpwr = 1", "[[riser_map.record]]\npicpwr = 1\nremove = true",
         "[riser_map]"},
        {"[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\nsize = 1",
         "[[i2c.bus]]\nnumber = 1\n[[i2c.bus.device]]\naddress = 1\nremove = true",
         "[[i2c.bus]]\nnumber = 1"},
        {"[[i2c.index_node]]\ndevice_type = 3\n[[i2c.index_node]]\ndevice_type = 3\nindex = 1",
         "[[i2c.index_node]]\ndevice_type = 3\nindex = 1\nremove = true",
         "[[i2c.index_node]]\ndevice_type = 3"},
        {"[[i2c.type]]\ndevice_type = 3", "[[i2c.type]]\ndevice_type = 3\nremove = true", "[i2c]"},
        {"[[service.object]]\npath = 'a'\ninterface = 'b'",
         "[[service.object]]\npath = 'a'\ninterface = 'b'\nremove = true", "[service]"},
        {"[[service.order]]\npath = 'a'\n[[service.order]]\npath = 'b'",
         "[[service.order]]\nposition = 1\nremove = true", "[[service.order]]\npath = 'b'"},
        // A table
        {"name = 'b'\n[riser_map]\nrecords = 1", "[riser_map]\nremove = true", "name = 'b'"},
        {"[[slot]]\nid = 1\n[slot.module]\ndevice_class = 1",
         "[[slot]]\nid = 1\nmodule.remove = true", "[[slot]]\nid = 1"},
        // A key
        {"[[slot]]\nid = 1\ndstat = 1\npayload_offset = 3",
         "[[slot]]\nid = 1\npayload_offset = { remove = true }", "[[slot]]\nid = 1\ndstat = 1"},
        {"[[slot]]\nid = 1\ndstat = 1\ndbyp = true\npayload_offset = 3",
         "[[slot]]\nid = 1\nremove = ['payload_offset', 'dbyp']", "[[slot]]\nid = 1\ndstat = 1"},
        {"name = 'b'\n[[slot]]\nid = 1", "remove = ['slot']", "name = 'b'"},
        {"name = 'b'", "remove = []", "name = 'b'"},
        // A list makes room for another one
        {"[[slot]]\nid = 1\n[[slot.module.end_point]]\ntype = 1\n[[slot.module.end_point]]\ntype = "
         "2",
         "[[slot]]\nid = 1\n[slot.module]\nremove = ['end_point']\n[[slot.module.end_point]]\n"
         "hot_plug = true",
         "[[slot]]\nid = 1\n[[slot.module.end_point]]\nhot_plug = true"},
    });
}

TEST(Overlay, replacesAnAlternative) {
    expectAll({
        {"[[slot]]\nid = 1\ndstat = 3\n[slot.module]\ndevice_class = 1",
         "[[slot]]\nid = 1\npayload = 7", "[[slot]]\nid = 1\ndstat = 3\npayload = 7"},
        {"[[slot]]\nid = 1\n[slot.module]\ndevice_class = 1", "[[slot]]\nid = 1\noem_area = 7",
         "[[slot]]\nid = 1\noem_area = 7"},
        {"[[slot]]\nid = 1\npayload = 1\noem_area = 2", "[[slot]]\nid = 1\n[slot.module]",
         "[[slot]]\nid = 1\n[slot.module]"},
        {"[[slot]]\nid = 1\npayload = 1\noem_area = 2", "[[slot]]\nid = 1\npayload = 3",
         "[[slot]]\nid = 1\npayload = 3\noem_area = 2"},
        {"[riser_map]\nrecords = 1\n[[riser_map.record]]\npicpwr = 1", "[riser_map]\nbytes = [1]",
         "[riser_map]\nbytes = [1]"},
        {"[riser_map]\nbytes = [1]", "[riser_map]\nrecords = 1", "[riser_map]\nrecords = 1"},
        {"[riser_map]\nbytes = [1]", "[riser_map]\n", "[riser_map]\nbytes = [1]"},
    });
}

// The values keep the places where they were read.
TEST(Overlay, keepsPlaces) {
    toml::table table =
        toml::parse("\n[[slot]]\nid = 2\ndstat = 1\n[[slot]]\nid = 3", std::string("over"));
    layOver(table,
            toml::parse("[[slot]]\nid = 1\n[[slot]]\nid = 2\ndstat = 3\ndbyp = true",
                        std::string("base")),
            nullptr);
    const auto place = [&](std::size_t at, const char* key) {
        const toml::table& slot = *table["slot"][at].as_table();
        const toml::node& node = *key == '\0' ? slot : *slot.get(key);
        return *node.source().path + ":" + std::to_string(node.source().begin.line);
    };
    EXPECT_EQ(place(0, ""), "base:1");
    EXPECT_EQ(place(0, "id"), "base:2");
    EXPECT_EQ(place(1, ""), "over:2");
    EXPECT_EQ(place(1, "id"), "over:3");
    EXPECT_EQ(place(1, "dstat"), "over:4");
    EXPECT_EQ(place(1, "dbyp"), "base:6");
    EXPECT_EQ(place(2, "id"), "over:6");
}

// An element of the base is found without a search through all of them.
TEST(Overlay, changesManyElementsAtOnce) {
    std::string base;
    std::string over;
    for (int number = 0; number < 60'000; ++number) {
        const std::string text = "[[i2c.bus]]\nnumber = " + std::to_string(number) + "\n";
        base += text;
        over += text + (number % 2 == 0 ? "remove = true\n" : "");
    }
    toml::table table = toml::parse(over);
    layOver(table, toml::parse(base), nullptr);
    EXPECT_EQ(table["i2c"]["bus"].as_array()->size(), 30'000U);
}

} // namespace
} // namespace board
