#include "zolt_board/index_node_differences.h"

#include "zolt_board/change_list.h"
#include "zolt_board/compare_lists.h"

#include "board/device_type_word.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

using board::IndexNode;
using board::SubNode;
using board::TypeAnswer;
using board::WrittenNumber;

std::string nameOf(const IndexNode& node) {
    return std::string("index node ")
        .append(board::deviceTypeWord(node.deviceType))
        .append(" ")
        .append(std::to_string(node.index));
}

template <typename Number>
Shown number(Number value) {
    return WrittenNumber{static_cast<std::int64_t>(value)};
}

template <typename Number>
Shown number(std::optional<Number> value) {
    return value ? number(*value) : Shown();
}

struct NumberField {
    const char* key;
    Shown (*of)(const IndexNode& node);
};

constexpr NumberField numberFields[] = {
    {"discoverable", [](const IndexNode& node) { return number(node.discoverable); }},
    {"picpwr", [](const IndexNode& node) { return number(node.picpwrId); }},
    {"is_sl_src", [](const IndexNode& node) { return number(node.isSlSrc); }},
    {"sl_src", [](const IndexNode& node) { return number(node.slSrc); }},
    {"hw_uid",
     [](const IndexNode& node) -> Shown {
         return WrittenNumber{node.hwUid, 4};
     }},
    {"slot_number", [](const IndexNode& node) { return number(node.slotNumber); }},
    {"slot_type", [](const IndexNode& node) { return number(node.slotType); }},
    {"physical_bus", [](const IndexNode& node) { return number(node.physicalBus); }},
    {"parent", [](const IndexNode& node) { return number(node.parent); }},
    {"bay_id", [](const IndexNode& node) { return number(node.bayId); }},
};

void compareSubNodes(const IndexNode& before, const IndexNode& after, const ChangeList& changes,
                     ChangeList& node) {
    const auto numbered = [](std::size_t index) {
        return std::string("sub node ").append(std::to_string(index + 1));
    };
    compareLists(
        before.subNodes, after.subNodes,
        [&](std::size_t index, const SubNode& first, const SubNode& second) {
            ChangeList sub =
                changes.at(std::string(nameOf(before)).append(", ").append(numbered(index)));
            sub.value("name", first.name, second.name);
            sub.value("discoverable", number(first.discoverable), number(second.discoverable));
            sub.value("sub_index", number(first.subIndex), number(second.subIndex));
            sub.value("sub_node_count", number(first.subNodeCount), number(second.subNodeCount));
        },
        [&](std::size_t index) { node.removed(numbered(index)); },
        [&](std::size_t index) { node.added(numbered(index)); });
}

void compareNodes(const IndexNode& before, const IndexNode& after, const ChangeList& changes) {
    ChangeList node = changes.at(nameOf(before));
    node.value("name", before.name, after.name);
    for (const NumberField& field : numberFields) {
        node.value(field.key, field.of(before), field.of(after));
    }
    node.value("sub_node_count", number(before.subNodeCount), number(after.subNodeCount), correct);
    compareSubNodes(before, after, changes, node);
}

// The nodes of one type are listed in their order. The first node of a bus lists the bus's devices.
void compareOrder(const std::vector<std::pair<const IndexNode*, const IndexNode*>>& pairs,
                  ChangeList& changes) {
    std::map<std::uint8_t, const IndexNode*> lastOfType;
    std::map<std::int32_t, const IndexNode*> lastOfBus;
    std::set<std::uint8_t> types;
    std::set<std::int32_t> buses;
    for (const auto& [before, after] : pairs) {
        const IndexNode*& sameType = lastOfType[after->deviceType];
        if (sameType != nullptr && after < sameType) {
            types.insert(after->deviceType);
        }
        sameType = after;
        if (after->hasBus() && before->physicalBus == after->physicalBus) {
            const IndexNode*& sameBus = lastOfBus[after->physicalBus];
            if (sameBus != nullptr && after < sameBus) {
                buses.insert(after->physicalBus);
            }
            sameBus = after;
        }
    }
    for (const std::uint8_t type : types) {
        changes.reordered(std::string("index nodes of type ").append(board::deviceTypeWord(type)));
    }
    for (const std::int32_t bus : buses) {
        changes.reordered(std::string("index nodes of bus ").append(std::to_string(bus)));
    }
}

class Answers {
public:
    explicit Answers(const board::I2cDescription& i2c) : i2c_(i2c) {
        for (const IndexNode& node : i2c.indexNodes) {
            types_.insert(node.deviceType);
        }
    }

    // What the parser answers if the description says so; none: the usual answer.
    [[nodiscard]] Shown statusOf(std::uint8_t type) const {
        const auto answer = unusual(type);
        return answer ? number(answer->status) : Shown();
    }
    [[nodiscard]] Shown rootOf(std::uint8_t type) const {
        constexpr std::array<const char*, 3> words{"none", "empty", "nodes"};
        const auto answer = unusual(type);
        return answer ? Shown(words.at(static_cast<std::size_t>(answer->root))) : Shown();
    }

private:
    using Root = TypeAnswer::Root;

    [[nodiscard]] std::optional<TypeAnswer> unusual(std::uint8_t type) const {
        const auto found = i2c_.answers.find(type);
        if (found == i2c_.answers.end()) {
            return std::nullopt;
        }
        const bool hasNodes = types_.contains(type);
        constexpr std::int32_t unknownType = -2;
        TypeAnswer answer = found->second;
        if (!hasNodes && answer.root == Root::nodes) {
            answer.root = Root::empty;
        }
        const bool isUsual = hasNodes ? answer.status == 0 && answer.root == Root::nodes
                                      : answer.status == unknownType && answer.root == Root::none;
        return isUsual ? std::nullopt : std::optional(answer);
    }

    const board::I2cDescription& i2c_;
    std::set<std::uint8_t> types_{};
};

void compareAnswers(const board::I2cDescription& before, const board::I2cDescription& after,
                    ChangeList& changes) {
    const Answers first(before);
    const Answers second(after);
    std::set<std::uint8_t> types;
    for (const auto* const i2c : {&before, &after}) {
        for (const auto& [type, answer] : i2c->answers) {
            types.insert(type);
        }
    }
    for (const std::uint8_t type : types) {
        const std::string name = std::string("parser of ").append(board::deviceTypeWord(type));
        changes.at(name).value("status", first.statusOf(type), second.statusOf(type), "usual");
        changes.at(name).value("root", first.rootOf(type), second.rootOf(type), "usual");
    }
}

} // namespace

void compareTopologies(const board::I2cDescription& before, const board::I2cDescription& after,
                       std::vector<Change>& changes) {
    ChangeList topology(changes, "topology");
    const Pairs pairs(before.indexNodes, after.indexNodes,
                      [](const IndexNode& node) { return std::pair(node.deviceType, node.index); });
    for (const IndexNode* const node : pairs.removed) {
        topology.removed(nameOf(*node));
    }
    for (const IndexNode* const node : pairs.added) {
        topology.added(nameOf(*node));
    }
    std::vector<std::pair<const IndexNode*, const IndexNode*>> both;
    both.reserve(pairs.both.size());
    for (const auto& [first, second] : pairs.both) {
        compareNodes(*first, *second, topology);
        both.emplace_back(first, second);
    }
    compareOrder(both, topology);
    compareAnswers(before, after, topology);
}

} // namespace zolt_board
