// Tests the published topology through the parser library, which reads it.
#include "standin/launcher/topology_file.h"

#include "board/board_loader.h"
#include "platform/sysinfo.h"
#include "standin/image/image.h"
#include "standin/image/topology.h"
#include "standin/launcher/i2c_side.h"
#include "tests/support/private_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace standin {
namespace {

constexpr int puckType = 24;
constexpr int badTopology = -74;

class TopologyFile : public testing::Test {
public:
    TopologyFile() { setenv(boardDirectoryVariable, directory_.path().c_str(), 1); }
    ~TopologyFile() override { setenv(boardDirectoryVariable, before_.c_str(), 1); }

protected:
    [[nodiscard]] std::string file() const { return directory_.path() / topologyFileName; }

    void publish(const board::Board& board, const BusCore& core) {
        replaceFile(file(), topologyOf(board, core));
    }

    // Parses a type, and expects a tree exactly when the status is 0.
    int statusOf(int deviceType) {
        SysInfoTree* tree = nullptr;
        const int status = i2c_parse_sysinfo(deviceType, &tree);
        EXPECT_EQ(tree != nullptr, status == 0);
        free_sysinfo(tree);
        return status;
    }

    struct CreatedNode {
        std::uint32_t parent;
        std::uint32_t index;
        const char* type;
    };

    // Creates index nodes, each with the next bus number.
    static void createNodes(BusCore& core, const std::vector<CreatedNode>& nodes) {
        for (const CreatedNode& node : nodes) {
            const std::uint32_t number = core.buses[core.busCount - 1].number + 1;
            ASSERT_EQ(busCoreAddIndexNode(&core, number, node.parent, node.index, node.type), 0);
        }
    }

    using Names = std::vector<std::string>;

    // The names of a type's index nodes, as far as their terminators.
    static Names namesOf(int deviceType) {
        SysInfoTree* tree = nullptr;
        Names names;
        EXPECT_EQ(i2c_parse_sysinfo(deviceType, &tree), 0);
        for (const IndexNodeInfo* node = tree->indexNodes; node != nullptr; node = node->next) {
            EXPECT_NE(std::memchr(node->name, 0, sizeof node->name), nullptr);
            names.emplace_back(node->name, strnlen(node->name, sizeof node->name));
        }
        free_sysinfo(tree);
        return names;
    }

private:
    // The other tests of this program have another board directory.
    std::string before_ = std::getenv(boardDirectoryVariable);
    zolt::test::PrivateDirectory directory_;
};

constexpr const char* describedNodes = R"(
[[i2c.bus]]
number = 5
[[i2c.bus]]
number = 20
[[i2c.bus.device]]
address = 0x51
node_type = "PUCK"
node_index = 4
[[i2c.index_node]]
device_type = "PUCK"
index = 1
name = "sixteen letters!"
physical_bus = 20
parent = 5
[[i2c.index_node.sub]]
name = "twenty-four letters, all"
sub_index = 6
[[i2c.index_node]]
device_type = "PUCK"
index = 2
physical_bus = 20
sub_node_count = -1
[[i2c.index_node]]
device_type = "RTC"
[[i2c.type]]
device_type = "TPM"
)";

TEST_F(TopologyFile, describedNodesListTheDeviceNodesOfTheirBus) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    publish(board, state.core());
    SysInfoTree* tree = nullptr;
    ASSERT_EQ(i2c_parse_sysinfo(puckType, &tree), 0);
    const IndexNodeInfo* first = tree->indexNodes;
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->index, 1);
    EXPECT_EQ(first->physicalBus, 20);
    EXPECT_EQ(first->subNodeCount, 2);
    EXPECT_EQ(std::memcmp(first->name, "sixteen letters!", 16), 0);
    const SubIndexNodeInfo* sub = first->subNodes;
    ASSERT_NE(sub, nullptr);
    EXPECT_EQ(sub->subIndex, 6);
    EXPECT_EQ(std::memcmp(sub->name, "twenty-four letters, all", 24), 0);
    sub = sub->next;
    ASSERT_NE(sub, nullptr);
    EXPECT_EQ(sub->subIndex, 4);
    EXPECT_STREQ(sub->name, "20-0051");
    EXPECT_EQ(sub->next, nullptr);
    // The second node on that bus does not list the bus's device nodes.
    const IndexNodeInfo* second = first->next;
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->index, 2);
    EXPECT_EQ(second->subNodeCount, -1);
    EXPECT_EQ(second->subNodes, nullptr);
    EXPECT_EQ(second->next, nullptr);
    free_sysinfo(tree);
}

TEST_F(TopologyFile, createdNodesFollowTheDescribedOnesOfTheirType) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    ASSERT_EQ(busCoreAddIndexNode(&state.core(), 21, 5, 3, "PUCK"), 0);
    ASSERT_EQ(busCoreAddIndexNode(&state.core(), 22, 5, 3, "HPM_AUTH_IC"), 0);
    ASSERT_EQ(busCoreAddIndexNode(&state.core(), 23, 5, 3, ""), 0); // without a type: not listed
    ASSERT_EQ(busCoreAddDeviceNode(&state.core(), 21, 0x7F, 9, "PUCK"), 0);
    ASSERT_EQ(busCoreAddDeviceNode(&state.core(), 21, 0x08, 8, "PUCK"), 0);
    publish(board, state.core());
    SysInfoTree* tree = nullptr;
    ASSERT_EQ(i2c_parse_sysinfo(puckType, &tree), 0);
    const IndexNodeInfo* node = tree->indexNodes->next->next;
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->name, "PUCK_3");
    EXPECT_EQ(node->index, 3);
    EXPECT_EQ(node->physicalBus, 21);
    EXPECT_EQ(node->subNodeCount, 2);
    EXPECT_EQ(node->discoverable, 0);
    EXPECT_STREQ(node->subNodes->name, "21-0008"); // by address
    EXPECT_STREQ(node->subNodes->next->name, "21-007f");
    EXPECT_EQ(node->next, nullptr);
    free_sysinfo(tree);
    EXPECT_EQ(statusOf(5), 0);
}

TEST_F(TopologyFile, aCreatedNodesNameKeepsItsIndexAndItsTerminator) {
    const board::Board board = board::parseBoard("[[i2c.bus]]\nnumber = 5", "b");
    BusState state = busStateOf(board);
    createNodes(state.core(), {{5, 9, "KARN_NON_RAID"},
                               {5, 10, "KARN_NON_RAID"},
                               {5, 11, "KARN_NON_RAID"},
                               {5, 1234567, "KARN_NON_RAID"},
                               {5, 0xFFFFFFFF, "PUCK"},
                               {5, 0xFFFFFFFF, "ETHSW_EEPROM"}});
    publish(board, state.core());
    EXPECT_EQ(namesOf(22),
              (Names{"KARN_NON_RAID_9", "KARN_NON_RAI_10", "KARN_NON_RAI_11", "KARN_NO_1234567"}));
    EXPECT_EQ(namesOf(puckType), Names{"PUCK_4294967295"});
    EXPECT_EQ(namesOf(36), Names{"ETHS_4294967295"});
}

TEST_F(TopologyFile, aCreatedNodesNameDiffersFromAllOthers) {
    const board::Board board = board::parseBoard(R"(
[[i2c.bus]]
number = 5
[[i2c.bus]]
number = 6
[[i2c.index_node]]
device_type = "RTC"
name = "PUCK_1"
)",
                                                 "b");
    BusState state = busStateOf(board);
    createNodes(state.core(), {{5, 1, "PUCK"},
                               {5, 3, "PUCK"},
                               {6, 3, "PUCK"},
                               {7, 3, "PUCK"}, // 7 is the bus of the first created node
                               {5, 0xFFFFFFFF, "KARN_NON_RAID"},
                               {5, 0xFFFFFFFF, "KARN_RAID"},
                               {5, 0xFFFFFFFF, "KARN"}});
    publish(board, state.core());
    EXPECT_EQ(namesOf(puckType), (Names{"PUCK~2_1", "PUCK_3", "PUCK~2_3", "PUCK~3_3"}));
    EXPECT_EQ(namesOf(22), Names{"KARN_4294967295"});
    EXPECT_EQ(namesOf(21), Names{"KA~2_4294967295"});
    EXPECT_EQ(namesOf(1), Names{"KA~3_4294967295"});
}

TEST_F(TopologyFile, asManyNodesAsTheDriverHoldsHaveNamesOfTheirOwn) {
    const board::Board board = board::parseBoard("[[i2c.bus]]\nnumber = 0", "b");
    BusState state = busStateOf(board);
    for (std::uint32_t parent = 0; parent < BUS_CORE_BUSES - 1; ++parent) {
        createNodes(state.core(), {{parent, 0xFFFFFFFF, "PUCK"}});
    }
    publish(board, state.core());
    const Names names = namesOf(puckType);
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), 255U);
    EXPECT_EQ(names.back(), "~255_4294967295");
}

TEST_F(TopologyFile, everyTypeHasItsStatus) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    publish(board, state.core());
    EXPECT_EQ(statusOf(49), 0); // known, without nodes
    EXPECT_EQ(statusOf(0), -2); // unknown
    EXPECT_EQ(statusOf(164), -2);
    EXPECT_EQ(statusOf(165), -22);
    EXPECT_EQ(statusOf(-1), -22);
    free_sysinfo(nullptr);
}

TEST_F(TopologyFile, withoutABoardThereIsNoData) {
    EXPECT_EQ(statusOf(puckType), -19); // a directory without the file
    unsetenv(boardDirectoryVariable);
    EXPECT_EQ(statusOf(puckType), -19);
}

TEST_F(TopologyFile, writingReplacesTheFileAtOnce) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    publish(board, state.core());
    std::ifstream before(file(), std::ios::binary);
    const auto size = std::filesystem::file_size(file());
    publish(board::parseBoard("", "b"), BusState().core());
    EXPECT_LT(std::filesystem::file_size(file()), size);
    before.seekg(0, std::ios::end);
    EXPECT_EQ(static_cast<std::uintmax_t>(before.tellg()), size); // the open file is the old one
    EXPECT_EQ(statusOf(puckType), -2);
    EXPECT_THROW(replaceFile(file() + "/below", {}), std::system_error);
}

// A program without standard input gets descriptor 0 for the first file that it opens.
TEST_F(TopologyFile, descriptor0IsWrittenAndClosedToo) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_NO_THROW(publish(board, state.core()));
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
    dup2(input, STDIN_FILENO);
    close(input);
    EXPECT_EQ(statusOf(puckType), 0);
}

// Wrong numbers in the file must not lead the library beyond the file's end.
TEST_F(TopologyFile, damagedFileIsNoTopology) {
    const board::Board board = board::parseBoard(describedNodes, "b");
    BusState state = busStateOf(board);
    const std::vector<std::byte> whole = topologyOf(board, state.core());
    constexpr std::size_t puck = offsetof(TopologyHeader, types) + puckType * sizeof(TopologyType);
    const std::size_t places[] = {
        0,
        offsetof(TopologyHeader, nodeCount),
        offsetof(TopologyHeader, subCount),
        puck + offsetof(TopologyType, firstNode),
        puck + offsetof(TopologyType, nodeCount),
    };
    for (const std::size_t place : places) {
        std::vector<std::byte> damaged = whole;
        std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(place), 4, std::byte{0xFF});
        replaceFile(file(), damaged);
        EXPECT_EQ(statusOf(puckType), badTopology) << place;
    }
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{15}, sizeof(TopologyHeader), whole.size() - 1}) {
        replaceFile(file(), {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        EXPECT_EQ(statusOf(puckType), badTopology) << size;
    }
    std::vector<std::byte> longer = whole;
    longer.push_back({});
    replaceFile(file(), longer);
    EXPECT_EQ(statusOf(puckType), badTopology);
}

TEST_F(TopologyFile, subNodesThatLieOutsideTheFileAreRefused) {
    const board::Board board = board::parseBoard(R"(
[[i2c.index_node]]
device_type = "PUCK"
[[i2c.index_node.sub]]
name = "one"
[[i2c.index_node]]
device_type = "PUCK"
)",
                                                 "b");
    BusState state = busStateOf(board);
    const std::vector<std::byte> whole = topologyOf(board, state.core());
    const auto with = [&](std::size_t place, std::uint32_t value) {
        std::vector<std::byte> damaged = whole;
        std::memcpy(damaged.data() + place, &value, sizeof value);
        replaceFile(file(), damaged);
        return statusOf(puckType);
    };
    constexpr std::size_t first = sizeof(TopologyHeader);
    constexpr std::size_t second = first + sizeof(TopologyNode);
    EXPECT_EQ(with(first + offsetof(TopologyNode, subCount), 1), 0);
    EXPECT_EQ(with(first + offsetof(TopologyNode, subCount), 2), badTopology);
    EXPECT_EQ(with(first + offsetof(TopologyNode, firstSub), 1), badTopology);
    EXPECT_EQ(with(first + offsetof(TopologyNode, firstSub), 0xFFFFFFFF), badTopology);
    // Two nodes claim the same sub node: together they claim more than there are.
    std::vector<std::byte> shared = whole;
    const std::uint32_t zero = 0;
    const std::uint32_t one = 1;
    std::memcpy(shared.data() + second + offsetof(TopologyNode, firstSub), &zero, sizeof zero);
    std::memcpy(shared.data() + second + offsetof(TopologyNode, subCount), &one, sizeof one);
    replaceFile(file(), shared);
    EXPECT_EQ(statusOf(puckType), badTopology);
}

TEST(BusStateOf, driverHasTheDescribedBoard) {
    const board::Board board = board::parseBoard(R"(
faults = ["i2c-open 6 error EBUSY", "i2c-ioctl 5 recover-bus 97 after 3 2 times delay 1500ms fail until recovery"]
[[i2c.bus]]
number = 20
properties = { 8 = 3 }
[[i2c.bus]]
number = 5
[[i2c.bus.device]]
address = 0x50
memory = [1]
node_type = "PSU"
node_index = 2
properties = { 7 = 42 }
[[i2c.index_node]]
device_type = "PUCK"
index = 1
physical_bus = 20
parent = 5
[[i2c.index_node]]
device_type = "PUCK"
physical_bus = 30
[[i2c.index_node]]
device_type = "PUCK"
)",
                                                 "b");
    BusState state = busStateOf(board);
    BusCore& core = state.core();
    EXPECT_EQ(core.busCount, 3U);
    const BusCoreBus* const node = busCoreFindBus(&core, 20);
    ASSERT_NE(node, nullptr);
    EXPECT_TRUE(node->isIndexNode);
    EXPECT_EQ(node->parent, 5U);
    EXPECT_EQ(node->index, 1U);
    EXPECT_STREQ(node->typeName, "PUCK");
    EXPECT_EQ(busCoreFindProperty(&core, 20, 0, 8)->value, 3U);
    const BusCoreDevice* const device = busCoreFindDevice(&core, 5, 0x50);
    ASSERT_NE(device, nullptr);
    EXPECT_TRUE(device->hasNode);
    EXPECT_EQ(device->index, 2U);
    EXPECT_EQ(device->memory[0], 1);
    EXPECT_EQ(busCoreFindProperty(&core, 5, 0x50, 7)->value, 42U);
    EXPECT_EQ(busCoreOpen(&core, 5), 0);
    EXPECT_EQ(busCoreOpen(&core, 30), 0);
    EXPECT_EQ(busCoreOpen(&core, 31), -ENOENT);
    EXPECT_EQ(busCoreOpen(&core, 6), -EBUSY);
    ASSERT_EQ(core.faultCount, 2U);
    EXPECT_FALSE(core.faults[1].anySelector);
    EXPECT_EQ(core.faults[1].selector, 97U);
    EXPECT_EQ(core.faults[1].error, EIO);
    EXPECT_EQ(core.faults[1].after, 3U);
    EXPECT_EQ(core.faults[1].times, 2U);
    EXPECT_EQ(core.faults[1].delay, 1500U);
    EXPECT_TRUE(core.faults[1].untilRecovery);
}

// The loader refuses such a description.
TEST(BusStateOf, boardLargerThanTheDriverIsRefused) {
    board::Board board;
    for (std::uint32_t bus = 0; bus <= BUS_CORE_BUSES; ++bus) {
        board.i2c.buses.push_back({.number = bus});
    }
    try {
        (void)busStateOf(board);
        ADD_FAILURE() << "accepted";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the board has more buses than the bus driver holds");
    }
}

} // namespace
} // namespace standin
