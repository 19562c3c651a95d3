#include "i2c/i2c_topology.h"

#include "platform/sysinfo.h"
#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <cstring>
#include <gtest/gtest.h>

namespace zolt::test {

namespace {

constexpr int picpwr = 16;

class Topology : public testing::Test {
protected:
    Topology() { resetPlatform(); }

    static std::string picpwrNodes(std::uint8_t picpwrId) {
        return outputOf([=] { EXPECT_EQ(printPicpwrNodes(picpwrId), 0); });
    }
    static std::string discoverableNodes(std::uint8_t deviceType) {
        return outputOf([=] { EXPECT_EQ(printDiscoverableNodes(deviceType), 0); });
    }
    static std::string allNodes(std::uint8_t deviceType) {
        return outputOf([=] { EXPECT_EQ(printAllI2cNodes(deviceType), 0); });
    }
    static const std::vector<std::string>& calls() { return platform().calls; }
};

// Fills a field with a name, without room for a terminator.
template <std::size_t Size>
void fill(char (&field)[Size], const std::string& name) {
    ASSERT_EQ(name.size(), Size);
    std::memcpy(field, name.data(), Size);
}

TEST_F(Topology, ANodeIsPrintedWithEveryFieldAndAllItsSubNodes) {
    const SubIndexNodeInfo second{
        .discoverable = 0, .subIndex = 2, .subNodeCount = -1, .name = "TEMP", .next = nullptr};
    const SubIndexNodeInfo first{
        .discoverable = 1, .subIndex = 1, .subNodeCount = 3, .name = "EEPROM", .next = &second};
    const IndexNodeInfo node{.discoverable = 1,
                             .picpwrId = 7,
                             .isSlSrc = 2,
                             .slSrc = 3,
                             .hwUid = 0x0A,
                             .index = 4,
                             .slotNumber = 11,
                             .slotType = 12,
                             .physicalBus = 21,
                             .subNodeCount = 2,
                             .name = "BP_NODE",
                             .subNodes = &first,
                             .bayId = 255};
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[19] = {.root = &tree};

    const std::string expected = "\n\nIndex Node Info\n"
                                 "Device Type       = BP\n"
                                 "Index             = 4\n"
                                 "Discoverable Node = 1\n"
                                 "Node Name         = BP_NODE\n"
                                 "Physical Bus      = 21\n"
                                 "Sub Node Count    = 2\n"
                                 "PICPWR ID         = 7\n"
                                 "is_sl_src         = 2\n"
                                 "sl_src            = 3\n"
                                 "HW_UID            = 0x0A\n"
                                 "Slot Number       = 11\n"
                                 "Slot Type         = 12\n"
                                 "Bay ID            = 255\n"
                                 "\nSub Index Node Info\n"
                                 "Sub Index         = 1\n"
                                 "Discoverable Node = 1\n"
                                 "Node Name         = EEPROM\n"
                                 "Sub Node Count    = 3\n"
                                 "\nSub Index Node Info\n"
                                 "Sub Index         = 2\n"
                                 "Discoverable Node = 0\n"
                                 "Node Name         = TEMP\n"
                                 "Sub Node Count    = -1\n";
    EXPECT_EQ(allNodes(19), expected);
    EXPECT_EQ(discoverableNodes(19), expected); // sub nodes are not filtered
    EXPECT_EQ(calls(), (std::vector<std::string>{"i2c_parse_sysinfo 19", "free_sysinfo 19",
                                                 "i2c_parse_sysinfo 19", "free_sysinfo 19"}));
}

TEST_F(Topology, ThePicpwrListingLeavesOutTypeAndSlot) {
    const SubIndexNodeInfo sub{.discoverable = 1, .subIndex = 5, .name = "SLOT_MUX"};
    const IndexNodeInfo node{.discoverable = 0,
                             .picpwrId = 63,
                             .isSlSrc = 1,
                             .slSrc = 9,
                             .hwUid = 0xBEEF,
                             .index = 255,
                             .slotNumber = 11,
                             .slotType = 12,
                             .physicalBus = -3,
                             .subNodeCount = 1,
                             .name = "PICPWR_255",
                             .subNodes = &sub,
                             .bayId = 8};
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[picpwr] = {.root = &tree};
    EXPECT_EQ(picpwrNodes(255), "\n\nIndex Node Info\n"
                                "Index             = 255\n"
                                "Discoverable Node = 0\n"
                                "Node Name         = PICPWR_255\n"
                                "Physical Bus      = -3\n"
                                "Sub Node Count    = 1\n"
                                "PICPWR ID         = 63\n"
                                "is_sl_src         = 1\n"
                                "sl_src            = 9\n"
                                "HW_UID            = 0xBEEF\n"
                                "Bay ID            = 8\n"
                                "\nSub Index Node Info\n"
                                "Sub Index         = 5\n"
                                "Discoverable Node = 1\n"
                                "Node Name         = SLOT_MUX\n"
                                "Sub Node Count    = 0\n");
    EXPECT_EQ(calls(), (std::vector<std::string>{"i2c_parse_sysinfo 16", "free_sysinfo 16"}));
}

// Returns the listing of a PICPWR node of zeros with this index and name.
std::string picpwrBlock(const std::string& index, const std::string& name) {
    return "\n\nIndex Node Info\nIndex             = " + index +
           "\nDiscoverable Node = 0\nNode Name         = " + name +
           "\nPhysical Bus      = 0\nSub Node Count    = 0\nPICPWR ID         = 0\n"
           "is_sl_src         = 0\nsl_src            = 0\nHW_UID            = 0x00\n"
           "Bay ID            = 0\n";
}

// Returns the other listings' text for a node of zeros with this type, discoverable flag and name.
std::string block(const std::string& type, const std::string& discoverable,
                  const std::string& name) {
    return "\n\nIndex Node Info\nDevice Type       = " + type +
           "\nIndex             = 0\nDiscoverable Node = " + discoverable +
           "\nNode Name         = " + name +
           "\nPhysical Bus      = 0\nSub Node Count    = 0\nPICPWR ID         = 0\n"
           "is_sl_src         = 0\nsl_src            = 0\nHW_UID            = 0x00\n"
           "Slot Number       = 0\nSlot Type         = 0\nBay ID            = 0\n";
}

TEST_F(Topology, ADeviceTypeIsPrintedWithItsNameIfItHasOne) {
    const IndexNodeInfo node{.name = "N"};
    SysInfoTree tree{.indexNodes = &node};
    const std::pair<std::uint8_t, const char*> types[] = {
        {0, "fSCP"}, {58, ""}, {59, ""}, {68, "FTULM_FRU"}, {164, ""}};
    for (const auto& [type, name] : types) {
        platform().sysinfo = {{type, {.root = &tree}}};
        EXPECT_EQ(allNodes(type), block(name, "0", "N"));
    }
}

TEST_F(Topology, OnlyADiscoverableFlagOfOneIsDiscoverable) {
    const IndexNodeInfo third{.discoverable = 1, .name = "THIRD"};
    const IndexNodeInfo second{.discoverable = 2, .name = "SECOND", .next = &third};
    const IndexNodeInfo first{.discoverable = 0, .name = "FIRST", .next = &second};
    SysInfoTree tree{.indexNodes = &first};
    platform().sysinfo[12] = {.root = &tree};
    EXPECT_EQ(discoverableNodes(12), block("PSU", "1", "THIRD"));
    EXPECT_EQ(allNodes(12), block("PSU", "0", "FIRST") + block("PSU", "2", "SECOND") +
                                block("PSU", "1", "THIRD"));
}

TEST_F(Topology, ANameThatFillsItsFieldEndsThere) {
    SubIndexNodeInfo sub{};
    fill(sub.name, "TWENTY-FOUR CHARACTERS!!");
    IndexNodeInfo node{.subNodes = &sub};
    fill(node.name, "SIXTEEN LETTERS!");
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[3] = {.root = &tree};
    EXPECT_EQ(allNodes(3), block("DIMM", "0", "SIXTEEN LETTERS!") +
                               "\nSub Index Node Info\n"
                               "Sub Index         = 0\n"
                               "Discoverable Node = 0\n"
                               "Node Name         = TWENTY-FOUR CHARACTERS!!\n"
                               "Sub Node Count    = 0\n");
}

TEST_F(Topology, ANameOfFifteenCharactersIsPrintedWhole) {
    const IndexNodeInfo node{.name = "FIFTEEN_LETTERS"};
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[3] = {.root = &tree};
    EXPECT_EQ(allNodes(3), block("DIMM", "0", "FIFTEEN_LETTERS"));
}

TEST_F(Topology, ATypeWithoutDataIsNotFound) {
    const IndexNodeInfo node{.discoverable = 1, .name = "UNSEEN"};
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[1] = {.status = 0, .root = nullptr};
    platform().sysinfo[2] = {.status = 3, .root = &tree}; // a failed parse: no data
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{1, 2, 59}) {
        EXPECT_EQ(allNodes(type), "Input device type not found in sysfs\n");
        EXPECT_EQ(discoverableNodes(type), "Input device type not found in sysfs\n");
    }
    EXPECT_EQ(calls(), (std::vector<std::string>{"i2c_parse_sysinfo 1", "free_sysinfo null",  //
                                                 "i2c_parse_sysinfo 1", "free_sysinfo null",  //
                                                 "i2c_parse_sysinfo 2", "free_sysinfo 2",     //
                                                 "i2c_parse_sysinfo 2", "free_sysinfo 2",     //
                                                 "i2c_parse_sysinfo 59", "free_sysinfo null", //
                                                 "i2c_parse_sysinfo 59", "free_sysinfo null"}));
}

TEST_F(Topology, ATypeWithoutDataIsFreedBehindItsLine) {
    SysInfoTree failedTree{};
    platform().sysinfo[2] = {.status = 1, .root = &failedTree};
    const std::string line = "Input device type not found in sysfs\n";
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{2, 59}) {
        for (const auto& list : {allNodes, discoverableNodes}) {
            platform().printed.clear();
            EXPECT_EQ(list(type), line);
            EXPECT_EQ(platform().printed, (std::vector<std::string>{"", line}));
        }
    }
}

TEST_F(Topology, NodesAreHandedOutBeforeTheirTreeIsFreed) {
    const IndexNodeInfo karn{.discoverable = 1, .name = "K"};
    const IndexNodeInfo slot{.index = 1, .name = "P"};
    SysInfoTree karnTree{.indexNodes = &karn};
    SysInfoTree slotTree{.indexNodes = &slot};
    platform().sysinfo = {{1, {.root = &karnTree}}, {picpwr, {.root = &slotTree}}};
    const std::string karnBlock = block("KARN", "1", "K");
    const std::string slotBlock = picpwrBlock("1", "P");
    EXPECT_EQ(allNodes(1), karnBlock);
    EXPECT_EQ(discoverableNodes(1), karnBlock);
    EXPECT_EQ(picpwrNodes(1), slotBlock);
    EXPECT_EQ(platform().printed,
              (std::vector<std::string>{"", karnBlock, "", karnBlock, "", slotBlock}));
}

TEST_F(Topology, ATypeWithoutNodesPrintsNothing) {
    SysInfoTree tree{};
    platform().sysinfo[5] = {.root = &tree};
    EXPECT_EQ(allNodes(5), "");
    EXPECT_EQ(discoverableNodes(5), "");
}

TEST_F(Topology, ATypeWithNothingDiscoverablePrintsNothing) {
    const IndexNodeInfo node{.name = "HIDDEN"};
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[5] = {.root = &tree};
    EXPECT_EQ(discoverableNodes(5), "");
}

TEST_F(Topology, From165OnAllTypesAreListedInOrderAndFreedOnce) {
    const IndexNodeInfo karn{.discoverable = 1, .name = "K"};
    const IndexNodeInfo unnamed{.discoverable = 1, .name = "U"};
    const IndexNodeInfo failed{.discoverable = 1, .name = "UNSEEN"};
    SysInfoTree karnTree{.indexNodes = &karn};
    SysInfoTree failedTree{.indexNodes = &failed};
    SysInfoTree unnamedTree{.indexNodes = &unnamed};
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{165, 166, 255}) {
        for (const auto& list : {allNodes, discoverableNodes}) {
            resetPlatform();
            platform().sysinfo = {{164, {.root = &unnamedTree}},
                                  {1, {.root = &karnTree}},
                                  {2, {.status = -1, .root = &failedTree}}};
            std::vector<std::string> expected;
            for (int asked = 0; asked <= 164; ++asked) {
                expected.push_back("i2c_parse_sysinfo " + std::to_string(asked));
                expected.push_back(platform().sysinfo.contains(asked)
                                       ? "free_sysinfo " + std::to_string(asked)
                                       : "free_sysinfo null");
            }
            EXPECT_EQ(list(type), block("KARN", "1", "K") + block("", "1", "U"));
            EXPECT_EQ(calls(), expected);
        }
    }
}

TEST_F(Topology, AllTypesWithoutDataPrintNothing) {
    EXPECT_EQ(allNodes(255), "");
    EXPECT_EQ(discoverableNodes(165), "");
}

TEST_F(Topology, MissingPicpwrDataIsReported) {
    const IndexNodeInfo node{.index = 9};
    SysInfoTree tree{.indexNodes = &node};
    const SysInfo answers[] = {{.status = 0, .root = nullptr}, {.status = 1, .root = &tree}};
    for (const SysInfo& answer : answers) {
        resetPlatform();
        platform().sysinfo[picpwr] = answer;
        EXPECT_EQ(picpwrNodes(0), "Receved NULL data.\n");
        EXPECT_EQ(picpwrNodes(9), "Receved NULL data.\nPICPWR 9 not found in sysfs\n");
        const std::string freed = answer.root == nullptr ? "free_sysinfo null" : "free_sysinfo 16";
        EXPECT_EQ(calls(), (std::vector<std::string>{"i2c_parse_sysinfo 16", freed,
                                                     "i2c_parse_sysinfo 16", freed}));
    }
}

TEST_F(Topology, OnlyTheFirstPicpwrOfAnIndexIsPrinted) {
    const IndexNodeInfo third{.index = 2, .name = "AGAIN"};
    const IndexNodeInfo second{.index = 2, .name = "TWO", .next = &third};
    const IndexNodeInfo first{.index = 0, .name = "ZERO", .next = &second};
    SysInfoTree tree{.indexNodes = &first};
    platform().sysinfo[picpwr] = {.root = &tree};
    EXPECT_EQ(picpwrNodes(2), picpwrBlock("2", "TWO"));
    EXPECT_EQ(picpwrNodes(200), "PICPWR 200 not found in sysfs\n");
}

TEST_F(Topology, ThePicpwrIsFoundByIndexNotById) {
    const IndexNodeInfo node{.picpwrId = 3, .index = -253, .name = "N"}; // its low byte is 3
    SysInfoTree tree{.indexNodes = &node};
    platform().sysinfo[picpwr] = {.root = &tree};
    EXPECT_EQ(picpwrNodes(3), "PICPWR 3 not found in sysfs\n");
}

TEST_F(Topology, AllPicpwrsEndWithTheFirstOfIndexZero) {
    const IndexNodeInfo third{.index = 3, .name = "THREE"};
    IndexNodeInfo second{.index = 0, .name = "ZERO", .next = &third};
    const IndexNodeInfo first{.index = 1, .name = "ONE", .next = &second};
    SysInfoTree tree{.indexNodes = &first};
    platform().sysinfo[picpwr] = {.root = &tree};
    EXPECT_EQ(picpwrNodes(0), picpwrBlock("1", "ONE") + picpwrBlock("0", "ZERO"));
    second.index = 2;
    EXPECT_EQ(picpwrNodes(0),
              picpwrBlock("1", "ONE") + picpwrBlock("2", "ZERO") + picpwrBlock("3", "THREE"));
    tree.indexNodes = nullptr;
    EXPECT_EQ(picpwrNodes(0), "");
    EXPECT_EQ(calls().size(), 6);
}

} // namespace

} // namespace zolt::test
