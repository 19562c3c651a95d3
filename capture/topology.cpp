#include "capture/topology.h"

#include "i2c/device_types.h"
#include "platform/sysinfo.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace capture {

namespace {

template <std::size_t Size>
std::string textOf(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

// Copies the lists of one device type. Each record is copied once for each list.
class TreeCopy {
public:
    TreeCopy(std::uint8_t deviceType, std::size_t room, TopologyReading& reading)
        : deviceType_(deviceType), room_(room), reading_(&reading) {}

    void copy(const IndexNodeInfo* first) {
        std::set<const void*> seen;
        for (const auto* node = first; node != nullptr && admit(node, seen); node = node->next) {
            reading_->nodes.push_back(indexNode(*node));
        }
    }

    [[nodiscard]] std::size_t room() const { return room_; }

private:
    // Whether the list may go on with this record.
    bool admit(const void* record, std::set<const void*>& seen) {
        if (room_ == 0 || !seen.insert(record).second) {
            reading_->isCut = true;
            return false;
        }
        --room_;
        return true;
    }

    board::IndexNode indexNode(const IndexNodeInfo& node) {
        board::IndexNode copy{
            .deviceType = deviceType_,
            .discoverable = node.discoverable,
            .picpwrId = node.picpwrId,
            .isSlSrc = node.isSlSrc,
            .slSrc = node.slSrc,
            .hwUid = node.hwUid,
            .index = node.index,
            .slotNumber = node.slotNumber,
            .slotType = node.slotType,
            .physicalBus = node.physicalBus,
            .bayId = node.bayId,
            .name = textOf(node.name),
            .subNodeCount = node.subNodeCount,
        };
        std::set<const void*> seen;
        for (const auto* sub = node.subNodes; sub != nullptr && admit(sub, seen); sub = sub->next) {
            copy.subNodes.push_back({.discoverable = sub->discoverable,
                                     .subIndex = sub->subIndex,
                                     .subNodeCount = sub->subNodeCount,
                                     .name = textOf(sub->name)});
        }
        return copy;
    }

    std::uint8_t deviceType_;
    std::size_t room_;
    TopologyReading* reading_;
};

// Holds one device type's tree, which the library owns.
class Tree {
public:
    explicit Tree(unsigned deviceType)
        : status_(i2c_parse_sysinfo(static_cast<int>(deviceType), &root_)) {}
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    ~Tree() { free_sysinfo(root_); }

    [[nodiscard]] int status() const { return status_; }
    [[nodiscard]] const SysInfoTree* root() const { return root_; }

private:
    SysInfoTree* root_ = nullptr;
    int status_;
};

} // namespace

void readTopology(Observation& observation, const Progress& progress) {
    std::size_t room = mostNodes;
    for (unsigned deviceType = 0; deviceType < zolt::deviceTypeCount; ++deviceType) {
        progress("I2C topology", deviceType, zolt::deviceTypeCount);
        const Tree tree(deviceType);
        TopologyReading& reading = observation.topology.emplace_back();
        reading.status = tree.status();
        reading.hasRoot = tree.root() != nullptr;
        // A root with a status other than 0 must not be read.
        if (reading.status == 0 && reading.hasRoot) {
            const std::size_t roomOfType = std::min(room, mostNodesOfType);
            TreeCopy copy(static_cast<std::uint8_t>(deviceType), roomOfType, reading);
            copy.copy(tree.root()->indexNodes);
            room -= roomOfType - copy.room();
        }
    }
}

} // namespace capture
