// Findings of the I2C topology: whether the nodes fit their lists, their buses and their fields.
#include "board/message_text.h"
#include "i2c/device_types.h"
#include "platform/sysinfo.h"
#include "zolt_board/joined.h"
#include "zolt_board/subjects.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zolt_board {

namespace {

std::string placeOf(const board::IndexNode& node) {
    const std::string type = zolt::deviceTypeName(node.deviceType);
    return joined("node ", type.empty() ? joined("type ", node.deviceType) : type, " ", node.index,
                  " ", board::inQuotes(node.name));
}

class NodeCheck {
public:
    NodeCheck(const board::Board& board, Findings& findings) : findings_(&findings) {
        for (const board::I2cBus& bus : board.i2c.buses) {
            deviceNodes_[bus.number] = static_cast<std::size_t>(
                std::ranges::count_if(bus.devices, [](const board::I2cDevice& device) {
                    return device.node.has_value();
                }));
        }
    }

    void check(const board::IndexNode& node, bool isReadable) {
        const std::size_t listed = node.subNodes.size() + deviceNodesOf(node);
        if (!isReadable) {
            return;
        }
        if (node.subNodeCount && !std::cmp_equal(*node.subNodeCount, listed)) {
            add(Kind::nodeCountDiffers, node,
                joined("the node states ", counted(*node.subNodeCount, "sub node")),
                joined("the ", listed, " of its list"));
        }
        if (node.physicalBus != noBus && !node.hasBus()) {
            add(Kind::nodeBusMissing, node, joined("the physical bus is ", node.physicalBus),
                joined("0 to ", board::highestBus, ", or -1 for no bus"));
        }
        if (node.picpwrId > board::slotCount) {
            add(Kind::picpwrOutOfRange, node, joined("the PICPWR ID is ", node.picpwrId),
                "1 to 63, or 0 for no slot");
        }
        checkTexts(node);
    }

private:
    static constexpr std::int32_t noBus = -1;

    void add(Kind kind, const board::IndexNode& node, std::string what, std::string expected) {
        findings_->push_back({kind, placeOf(node), std::move(what), std::move(expected)});
    }

    // The driver's device nodes of the node's bus. The first node of the bus lists them.
    std::size_t deviceNodesOf(const board::IndexNode& node) {
        const auto bus = deviceNodes_.find(node.physicalBus);
        return bus != deviceNodes_.end() && listedBuses_.insert(node.physicalBus).second
                   ? bus->second
                   : 0;
    }

    // One finding for the names of all sub nodes.
    void checkTexts(const board::IndexNode& node) {
        constexpr std::size_t room = sizeof(IndexNodeInfo::name);
        constexpr std::size_t subRoom = sizeof(SubIndexNodeInfo::name);
        if (fills(node.name, room)) {
            add(Kind::textWithoutEnd, node,
                joined("all ", room, " characters of the name are in use"), "a NUL at the end");
        }
        const auto full = std::ranges::count_if(
            node.subNodes, [&](const board::SubNode& sub) { return fills(sub.name, subRoom); });
        if (full != 0) {
            add(Kind::textWithoutEnd, node,
                joined("all ", subRoom, " characters of the names of ", counted(full, "sub node"),
                       " are in use"),
                "a NUL at the end");
        }
    }

    static bool fills(const std::string& name, std::size_t room) {
        return name.size() >= room && !name.contains('\0');
    }

    std::map<std::int64_t, std::size_t> deviceNodes_; ///< their number by bus
    std::set<std::int64_t> listedBuses_;
    Findings* findings_;
};

} // namespace

void checkNodes(const ReaderView& board, Findings& findings) {
    NodeCheck check(board.board(), findings);
    std::vector<const board::IndexNode*> nodes;
    for (const board::IndexNode& node : board.board().i2c.indexNodes) {
        nodes.push_back(&node);
    }
    // The parser lists type by type.
    std::ranges::stable_sort(nodes, {}, &board::IndexNode::deviceType);
    for (const board::IndexNode* const node : nodes) {
        check.check(*node, board.readable().nodes(node->deviceType));
    }
}

} // namespace zolt_board
