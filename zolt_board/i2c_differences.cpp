#include "zolt_board/i2c_differences.h"

#include "zolt_board/index_node_differences.h"

#include "zolt_board/change_list.h"

#include "board/device_type_word.h"

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <string>

namespace zolt_board {

namespace {

using board::I2cBus;
using board::I2cDevice;
using board::WrittenNumber;

constexpr unsigned byteDigits = 2;

// The things by their number, and nothing for the numbers that the other board has.
template <typename Thing, typename Number>
std::map<std::uint32_t, const Thing*> byNumber(const std::vector<Thing>& things, Number number) {
    std::map<std::uint32_t, const Thing*> all;
    for (const Thing& thing : things) {
        all.emplace(thing.*number, &thing);
    }
    return all;
}

template <typename Map>
std::set<typename Map::key_type> keysOf(const Map& before, const Map& after) {
    std::set<typename Map::key_type> keys;
    for (const Map* const map : {&before, &after}) {
        for (const auto& [key, value] : *map) {
            keys.insert(key);
        }
    }
    return keys;
}

template <typename Map>
typename Map::mapped_type valueIn(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? typename Map::mapped_type{} : found->second;
}

void compareProperties(const board::I2cProperties& before, const board::I2cProperties& after,
                       ChangeList& changes) {
    for (const std::uint32_t id : keysOf(before, after)) {
        const auto shown = [&](const board::I2cProperties& properties) {
            const auto found = properties.find(id);
            return found == properties.end() ? Shown()
                                             : Shown(WrittenNumber{found->second, byteDigits});
        };
        changes.value(std::string("property ").append(std::to_string(id)), shown(before),
                      shown(after));
    }
}

Shown shownNode(const I2cDevice& device) {
    if (!device.node) {
        return {};
    }
    return board::WrittenList{board::writtenDeviceType(device.node->deviceType),
                              WrittenNumber{device.node->index}};
}

void compareDevices(const I2cDevice& before, const I2cDevice& after, ChangeList changes) {
    const auto sizeOf = [](const I2cDevice& device) {
        return WrittenNumber{static_cast<std::int64_t>(device.memory.size())};
    };
    changes.value("size", sizeOf(before), sizeOf(after));
    constexpr unsigned offsetDigits = 2;
    const std::size_t common = std::min(before.memory.size(), after.memory.size());
    changes.bytes("memory byte", std::span(before.memory).first(common),
                  std::span(after.memory).first(common), 0, offsetDigits);
    const auto added = std::span(after.memory).subspan(common);
    const auto removed = std::span(before.memory).subspan(common);
    changes.bytes("memory byte", removed, added, static_cast<std::uint32_t>(common), offsetDigits);
    changes.value("pointer_width", WrittenNumber{before.pointerWidth},
                  WrittenNumber{after.pointerWidth});
    changes.value("read_only", before.readOnly, after.readOnly);
    changes.value("node", shownNode(before), shownNode(after));
    compareProperties(before.properties, after.properties, changes);
}

std::string nameOf(const I2cDevice& device) {
    return std::string("device ").append(
        board::tomlText(WrittenNumber{device.address, byteDigits}));
}

void compareBuses(const I2cBus& before, const I2cBus& after, ChangeList& changes) {
    compareProperties(before.properties, after.properties, changes);
    const auto first = byNumber(before.devices, &I2cDevice::address);
    const auto second = byNumber(after.devices, &I2cDevice::address);
    for (const std::uint32_t address : keysOf(first, second)) {
        const I2cDevice* const older = valueIn(first, address);
        const I2cDevice* const newer = valueIn(second, address);
        if (older == nullptr) {
            changes.added(nameOf(*newer));
        } else if (newer == nullptr) {
            changes.removed(nameOf(*older));
        } else {
            compareDevices(*older, *newer, changes.at(nameOf(*older)));
        }
    }
}

bool hasNodeOn(const board::I2cDescription& i2c, std::uint32_t bus) {
    return std::ranges::any_of(i2c.indexNodes, [&](const board::IndexNode& node) {
        return node.hasBus() && static_cast<std::uint32_t>(node.physicalBus) == bus;
    });
}

} // namespace

void compareI2c(const board::I2cDescription& before, const board::I2cDescription& after,
                std::vector<Change>& changes) {
    const auto first = byNumber(before.buses, &I2cBus::number);
    const auto second = byNumber(after.buses, &I2cBus::number);
    for (const std::uint32_t number : keysOf(first, second)) {
        // A bus without a description of its own exists when an index node is on it.
        const I2cBus empty{.number = number};
        const auto bus = [&](const auto& buses, const board::I2cDescription& i2c) {
            const I2cBus* const described = valueIn(buses, number);
            return described == nullptr && hasNodeOn(i2c, number) ? &empty : described;
        };
        const I2cBus* const older = bus(first, before);
        const I2cBus* const newer = bus(second, after);
        ChangeList list(changes, std::string("/dev/i2c-").append(std::to_string(number)));
        if (older == nullptr) {
            list.added("bus");
        } else if (newer == nullptr) {
            list.removed("bus");
        } else {
            compareBuses(*older, *newer, list);
        }
    }
    compareTopologies(before, after, changes);
}

} // namespace zolt_board
