#include "zolt_board/i2c_tree.h"

#include "board/device_type_word.h"
#include "zolt_board/joined.h"
#include "zolt_board/summary.h"

#include <map>
#include <set>
#include <string>

namespace zolt_board {

namespace {

using board::I2cBus;
using board::I2cDevice;
using board::IndexNode;

std::string nodeText(std::uint8_t deviceType, std::int64_t index) {
    const std::string word = board::deviceTypeWord(deviceType);
    std::string text = word == std::to_string(deviceType) ? "type " : "";
    return text.append(word).append(" ").append(std::to_string(index));
}

std::string deviceText(const I2cDevice& device) {
    std::string text = "device " + inHex(device.address);
    if (!device.memory.empty()) {
        text.append(", ").append(counted(device.memory.size(), "byte")).append(" of memory");
        text.append(device.readOnly ? ", read only" : "");
    }
    if (device.node) {
        text.append(", node ").append(nodeText(device.node->deviceType, device.node->index));
    }
    return text;
}

class I2cTree {
public:
    I2cTree(const board::I2cDescription& i2c, const Output& output) : output_(&output) {
        for (const I2cBus& bus : i2c.buses) {
            buses_.emplace(bus.number, &bus);
        }
        for (const IndexNode& node : i2c.indexNodes) {
            if (node.parent) {
                behind_.emplace(*node.parent, &node);
            }
            if (node.hasBus()) {
                hasNode_.insert(static_cast<std::uint32_t>(node.physicalBus));
            }
        }
    }

    void add(const board::I2cDescription& i2c, Branch& branch) {
        for (const IndexNode& node : i2c.indexNodes) {
            if (!node.parent) {
                addNode(node, branch);
            }
        }
        for (const I2cBus& bus : i2c.buses) {
            if (!hasNode_.contains(bus.number)) {
                addBus(bus.number, branch);
            }
        }
        // A circle of buses has no start.
        for (const IndexNode& node : i2c.indexNodes) {
            if (!shownNodes_.contains(&node)) {
                addNode(node, branch);
            }
        }
    }

private:
    void addNode(const IndexNode& node, Branch& branch) {
        if (!shownNodes_.insert(&node).second) {
            return;
        }
        std::string text = output_->painted(Part::name, nodeText(node.deviceType, node.index));
        text.append(" '").append(output_->safe(node.name)).append("'");
        text.append(node.discoverable != 0 ? ", discoverable" : "");
        Branch& own = branch.add(std::move(text));
        for (const board::SubNode& sub : node.subNodes) {
            own.add("sub node " + std::to_string(sub.subIndex) + " '" + output_->safe(sub.name) +
                    "'");
        }
        if (node.hasBus()) {
            addBus(static_cast<std::uint32_t>(node.physicalBus), own);
        }
    }

    void addBus(std::uint32_t number, Branch& branch) {
        Branch& own = branch.add("/dev/i2c-" + std::to_string(number));
        if (!shownBuses_.insert(number).second) {
            own.text.append(", shown above");
            return;
        }
        if (const auto bus = buses_.find(number); bus != buses_.end()) {
            for (const I2cDevice& device : bus->second->devices) {
                own.add(deviceText(device));
            }
        }
        const auto [first, last] = behind_.equal_range(number);
        for (auto node = first; node != last; ++node) {
            addNode(*node->second, own);
        }
    }

    const Output* output_;
    std::map<std::uint32_t, const I2cBus*> buses_;
    std::multimap<std::uint32_t, const IndexNode*> behind_; ///< nodes by their parent bus
    std::set<std::uint32_t> hasNode_;                       ///< buses of nodes
    std::set<std::uint32_t> shownBuses_;
    std::set<const IndexNode*> shownNodes_;
};

} // namespace

void addI2c(const board::I2cDescription& i2c, const Output& output, Branch& root) {
    if (i2c.buses.empty() && i2c.indexNodes.empty() && i2c.answers.empty()) {
        return;
    }
    Branch& branch = root.add(output.painted(Part::heading, "I2C"));
    I2cTree(i2c, output).add(i2c, branch);
    for (const auto& [deviceType, answer] : i2c.answers) {
        if (answer.status != 0) {
            branch.add(output.painted(Part::wrong, board::deviceTypeWord(deviceType) +
                                                       ": the parser fails with status " +
                                                       std::to_string(answer.status)));
        }
    }
}

} // namespace zolt_board
