// Hands out trees of any records and holds each listing to the records, byte for byte. The expected
// text is composed here by printf from the contract's labels. Names may fill their fields, and
// counts may be wrong: a listing follows the pointers alone.
#include "i2c/device_types.h"
#include "i2c/i2c_topology.h"
#include "platform/sysinfo.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"
#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace {

using zolt::fuzz::Bytes;
using zolt::fuzz::require;
using zolt::test::outputOf;
using zolt::test::platform;

constexpr int picpwr = 16;
constexpr int deviceTypes = 165;

// The library's memory. Each record lies in an allocation of its own, so that AddressSanitizer sees
// a read beyond its end.
struct Tree {
    int status = 0;
    std::unique_ptr<SysInfoTree> root; // may be null
    std::deque<std::unique_ptr<IndexNodeInfo>> nodes;
    std::deque<std::unique_ptr<SubIndexNodeInfo>> subNodes;
};

std::map<int, Tree> trees; // by device type

[[gnu::format(printf, 2, 3)]] void add(std::string& text, const char* format, ...) {
    std::array<char, 256> line;
    va_list arguments;
    va_start(arguments, format);
    text.append(line.data(), static_cast<std::size_t>(
                                 std::vsnprintf(line.data(), line.size(), format, arguments)));
    va_end(arguments);
}

template <std::size_t Size>
void setName(char (&name)[Size], Bytes& bytes) {
    std::ranges::copy(bytes.takeText(bytes.take() % (Size + 1)), name);
}

std::int32_t number(Bytes& bytes) {
    const std::uint8_t small = bytes.take();
    return small < 0xF0 ? small % 8 : static_cast<std::int32_t>(bytes.take32());
}

void addSubNodes(Tree& tree, IndexNodeInfo& node, Bytes& bytes) {
    const SubIndexNodeInfo** end = &node.subNodes;
    for (unsigned count = bytes.take() % 4; count > 0; --count) {
        SubIndexNodeInfo& sub = *tree.subNodes.emplace_back(std::make_unique<SubIndexNodeInfo>());
        sub.discoverable = bytes.take();
        sub.subIndex = number(bytes);
        sub.subNodeCount = number(bytes);
        sub.reserved = number(bytes);
        setName(sub.name, bytes);
        *end = &sub;
        end = &sub.next;
    }
}

void addTree(Bytes& bytes) {
    const std::uint8_t kind = bytes.take();
    Tree& tree = trees[kind % 2 == 0 ? picpwr : bytes.take() % deviceTypes];
    tree.status = kind % 8 == 7 ? number(bytes) : 0;
    if (kind % 16 == 15) {
        return; // no root
    }
    tree.root = std::make_unique<SysInfoTree>();
    const IndexNodeInfo** end = &tree.root->indexNodes;
    for (unsigned count = bytes.take() % 6; count > 0; --count) {
        IndexNodeInfo& node = *tree.nodes.emplace_back(std::make_unique<IndexNodeInfo>());
        node.discoverable = bytes.take() % 3;
        node.picpwrId = bytes.take();
        node.isSlSrc = bytes.take();
        node.slSrc = bytes.take();
        node.hwUid = bytes.take16();
        node.index = number(bytes);
        node.slotNumber = number(bytes);
        node.slotType = number(bytes);
        node.physicalBus = number(bytes);
        node.subNodeCount = number(bytes);
        node.bayId = bytes.take();
        setName(node.name, bytes);
        addSubNodes(tree, node, bytes);
        *end = &node;
        end = &node.next;
    }
}

template <std::size_t Size>
std::string nameOf(const char (&name)[Size]) {
    return {std::begin(name), std::find(std::begin(name), std::end(name), '\0')};
}

void expectNode(std::string& text, const IndexNodeInfo& node, int deviceType, bool isListing) {
    add(text, "\n\nIndex Node Info\n");
    if (isListing) {
        const std::string type = zolt::deviceTypeName(static_cast<std::uint32_t>(deviceType));
        add(text, "Device Type       = %s\n", type.c_str());
    }
    add(text, "Index             = %d\nDiscoverable Node = %d\n", node.index, node.discoverable);
    text.append("Node Name         = ").append(nameOf(node.name)).append("\n");
    add(text, "Physical Bus      = %d\nSub Node Count    = %d\nPICPWR ID         = %d\n",
        node.physicalBus, node.subNodeCount, node.picpwrId);
    add(text, "is_sl_src         = %d\nsl_src            = %d\nHW_UID            = 0x%02X\n",
        node.isSlSrc, node.slSrc, static_cast<unsigned>(node.hwUid));
    if (isListing) {
        add(text, "Slot Number       = %d\nSlot Type         = %d\n", node.slotNumber,
            node.slotType);
    }
    add(text, "Bay ID            = %d\n", node.bayId);
    for (const SubIndexNodeInfo* sub = node.subNodes; sub != nullptr; sub = sub->next) {
        add(text, "\nSub Index Node Info\nSub Index         = %d\nDiscoverable Node = %d\n",
            sub->subIndex, sub->discoverable);
        text.append("Node Name         = ").append(nameOf(sub->name)).append("\n");
        add(text, "Sub Node Count    = %d\n", sub->subNodeCount);
    }
}

const SysInfoTree* dataOf(int deviceType) {
    const auto found = trees.find(deviceType);
    return found == trees.end() || found->second.status != 0 ? nullptr : found->second.root.get();
}

std::string expectedPicpwr(std::uint8_t index) {
    const SysInfoTree* const tree = dataOf(picpwr);
    std::string text = tree == nullptr ? "Receved NULL data.\n" : "";
    const IndexNodeInfo* node = tree == nullptr ? nullptr : tree->indexNodes;
    for (; node != nullptr; node = node->next) {
        if (index == 0 || node->index == index) {
            expectNode(text, *node, picpwr, false);
        }
        if (node->index == index) {
            return text; // the one node, or the one that ends the list
        }
    }
    if (index != 0) {
        add(text, "PICPWR %d not found in sysfs\n", index);
    }
    return text;
}

std::string expectedListing(std::uint8_t deviceType, bool all) {
    std::string text;
    for (int type = 0; type < deviceTypes; ++type) {
        if (deviceType < deviceTypes && type != deviceType) {
            continue;
        }
        const SysInfoTree* const tree = dataOf(type);
        if (tree == nullptr && deviceType < deviceTypes) {
            text = "Input device type not found in sysfs\n";
        }
        const IndexNodeInfo* node = tree == nullptr ? nullptr : tree->indexNodes;
        for (; node != nullptr; node = node->next) {
            if (all || node->discoverable == 1) {
                expectNode(text, *node, type, true);
            }
        }
    }
    return text;
}

// Each tree goes back to the library before the listing asks for the next one.
void requireCalls(int first, int last) {
    std::vector<std::string> expected;
    for (int type = first; type <= last; ++type) {
        const auto tree = trees.find(type);
        const bool isNull = tree == trees.end() || tree->second.root == nullptr;
        expected.push_back("i2c_parse_sysinfo " + std::to_string(type));
        expected.push_back("free_sysinfo " + (isNull ? "null" : std::to_string(type)));
    }
    require(platform().calls == expected);
    platform().calls.clear();
    platform().printed.clear();
}

void handOutTrees() {
    zolt::test::resetPlatform();
    for (const auto& [deviceType, tree] : trees) {
        platform().sysinfo[deviceType] = {.status = tree.status, .root = tree.root.get()};
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    trees.clear();
    const std::uint8_t index = bytes.take();
    const std::uint8_t deviceType = bytes.take();
    for (unsigned count = bytes.take() % 4; count > 0; --count) {
        addTree(bytes);
    }
    handOutTrees();
    require(outputOf([&] { (void)zolt::printPicpwrNodes(index); }) == expectedPicpwr(index));
    requireCalls(picpwr, picpwr);
    const int first = deviceType < deviceTypes ? deviceType : 0;
    const int last = deviceType < deviceTypes ? deviceType : deviceTypes - 1;
    require(outputOf([&] { (void)zolt::printDiscoverableNodes(deviceType); }) ==
            expectedListing(deviceType, false));
    requireCalls(first, last);
    require(outputOf([&] { (void)zolt::printAllI2cNodes(deviceType); }) ==
            expectedListing(deviceType, true));
    requireCalls(first, last);
    return 0;
}
