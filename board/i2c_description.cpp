#include "board/i2c_description.h"

#include "board/described_once.h"
#include "board/device_type.h"
#include "board/driver_room.h"
#include "board/message_text.h"
#include "board/number.h"

#include "i2c/device_types.h"
#include "platform/sysinfo.h"
#include "standin/i2c_bus/core/bus_core.h"

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <utility>

namespace board {

namespace {

static_assert(highestBus == BUS_CORE_HIGHEST_BUS);

template <typename T>
T number(TomlTable& table, std::string_view key, T otherwise = 0) {
    return static_cast<T>(
        table.integer(key, std::numeric_limits<T>::min(), std::numeric_limits<T>::max())
            .value_or(otherwise));
}

// Reads a flag: true or false, or a byte for a record with another value.
std::uint8_t flag(TomlTable& table, std::string_view key) {
    const auto* const node = table.node(key);
    return node != nullptr && node->is_boolean() ? std::uint8_t{*table.boolean(key)}
                                                 : number<std::uint8_t>(table, key);
}

// Reads a name: a text, or an array of bytes for a name that is no UTF-8. A name that fills its
// field has no terminator there.
std::string nameOf(TomlTable& table, std::size_t room) {
    const auto* const node = table.node("name");
    std::string name;
    if (node != nullptr && node->is_array()) {
        const Bytes bytes = table.bytes("name").value_or(Bytes{});
        name.assign(bytes.begin(), bytes.end());
    } else {
        name = table.text("name").value_or("");
    }
    if (name.size() > room) {
        table.place("name").refuse("'name' has " + std::to_string(name.size()) +
                                   " characters, at most " + std::to_string(room) + " fit");
    }
    return name;
}

std::optional<std::uint8_t> deviceTypeAt(TomlTable& table, std::string_view key) {
    const auto* const node = table.node(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    if (!node->is_string()) {
        return static_cast<std::uint8_t>(table.requiredInteger(key, 0, zolt::deviceTypeCount - 1));
    }
    const auto code = deviceTypeCode(*table.text(key));
    if (!code) {
        table.place(key).refuse(noDeviceType(*table.text(key)));
    }
    return code;
}

std::uint8_t requiredDeviceType(TomlTable& table) {
    const auto code = deviceTypeAt(table, "device_type");
    if (!code) {
        table.place().refuse("'device_type' is missing");
    }
    return *code;
}

I2cProperties readProperties(TomlTable& owner, DriverRoom& room) {
    constexpr auto highest = std::numeric_limits<std::uint32_t>::max();
    I2cProperties properties;
    if (auto table = owner.table("properties")) {
        DescribedOnce described("property"); // 8 and 0x8 are the same property
        for (const std::string& key : table->names()) {
            const auto id = numberIn(key, 0, highest);
            if (!id) {
                table->place(key).refuse("properties: " + inQuotes(key) +
                                         " is no property number (0 to 4294967295)");
            }
            described.note(*id, table->place(key));
            room.addProperty(table->place(key));
            properties[static_cast<std::uint32_t>(*id)] =
                static_cast<std::uint32_t>(table->requiredInteger(key, 0, highest));
        }
    }
    return properties;
}

void readMemory(TomlTable& table, I2cDevice& device) {
    constexpr std::uint8_t erased = 0xFF;
    constexpr std::uint32_t shortPointerReach = 0x100;
    constexpr std::uint32_t longPointerReach = 0x10000;
    device.memory = table.bytes("memory").value_or(Bytes{});
    const auto described = static_cast<std::uint32_t>(device.memory.size());
    const auto size =
        static_cast<std::uint32_t>(table.integer("size", 0, longPointerReach).value_or(described));
    device.pointerWidth = static_cast<std::uint32_t>(
        table.integer("pointer_width", 1, 2).value_or(size > shortPointerReach ? 2 : 1));
    if (size < described) {
        table.place("size").refuse("device: 'memory' has " + std::to_string(described) +
                                   " bytes, more than 'size'");
    }
    if (size > (device.pointerWidth == 1 ? shortPointerReach : longPointerReach)) {
        table.place("size").refuse("device: a 'pointer_width' of 1 does not reach " +
                                   std::to_string(size) + " bytes");
    }
    device.memory.resize(
        size,
        static_cast<std::uint8_t>(
            table.integer("fill", 0, std::numeric_limits<std::uint8_t>::max()).value_or(erased)));
    device.readOnly = table.boolean("read_only").value_or(false);
}

I2cDevice readDevice(TomlTable& table, DriverRoom& room) {
    I2cDevice device;
    room.addDevice(table.place());
    device.address =
        static_cast<std::uint32_t>(table.requiredInteger("address", 1, BUS_CORE_HIGHEST_ADDRESS));
    readMemory(table, device);
    const auto index = number<std::uint32_t>(table, "node_index");
    if (const auto type = deviceTypeAt(table, "node_type")) {
        device.node = {*type, index};
    } else if (device.memory.empty()) {
        table.place().refuse("device: needs 'memory', 'size' or 'node_type'");
    }
    device.properties = readProperties(table, room);
    return device;
}

void readBuses(TomlTable& i2c, I2cDescription& description, DriverRoom& room) {
    DescribedOnce buses("bus");
    i2c.eachTable("bus", [&](TomlTable& table) {
        I2cBus bus;
        bus.number =
            static_cast<std::uint32_t>(table.requiredInteger("number", 0, BUS_CORE_HIGHEST_BUS));
        buses.note(bus.number, table.place("number"));
        room.addBus(bus.number, table.place("number"));
        bus.properties = readProperties(table, room);
        DescribedOnce addresses("device");
        table.eachTable("device", [&](TomlTable& deviceTable) {
            I2cDevice device = readDevice(deviceTable, room);
            addresses.note(device.address, deviceTable.place("address"));
            bus.devices.push_back(std::move(device));
        });
        description.buses.push_back(std::move(bus));
    });
}

SubNode readSubNode(TomlTable& table) {
    return {
        .discoverable = flag(table, "discoverable"),
        .subIndex = number<std::int32_t>(table, "sub_index"),
        .subNodeCount = number<std::int32_t>(table, "sub_node_count"),
        .name = nameOf(table, sizeof(SubIndexNodeInfo::name)),
    };
}

IndexNode readIndexNode(TomlTable& table) {
    IndexNode node{
        .deviceType = requiredDeviceType(table),
        .discoverable = flag(table, "discoverable"),
        .picpwrId = number<std::uint8_t>(table, "picpwr"),
        .isSlSrc = flag(table, "is_sl_src"),
        .slSrc = number<std::uint8_t>(table, "sl_src"),
        .hwUid = number<std::uint16_t>(table, "hw_uid"),
        .index = number<std::int32_t>(table, "index"),
        .slotNumber = number<std::int32_t>(table, "slot_number"),
        .slotType = number<std::int32_t>(table, "slot_type"),
        .physicalBus = number<std::int32_t>(table, "physical_bus", -1),
        .bayId = number<std::uint8_t>(table, "bay_id"),
        .name = nameOf(table, sizeof(IndexNodeInfo::name)),
    };
    if (table.node("sub_node_count") != nullptr) {
        node.subNodeCount = number<std::int32_t>(table, "sub_node_count");
    }
    if (const auto parent = table.integer("parent", 0, BUS_CORE_HIGHEST_BUS)) {
        node.parent = static_cast<std::uint32_t>(*parent);
    }
    table.eachTable("sub", [&](TomlTable& sub) { node.subNodes.push_back(readSubNode(sub)); });
    return node;
}

// Each index node with a parent needs a bus of its own: the driver creates a bus for each.
void checkParent(TomlTable& table, const IndexNode& node, const std::set<std::int64_t>& known,
                 const std::set<std::int64_t>& taken) {
    if (!node.parent) {
        return;
    }
    if (!node.hasBus()) {
        table.place().refuse("index_node: a node with 'parent' needs 'physical_bus'");
    }
    if (!known.contains(*node.parent)) {
        table.place("parent").refuse(
            "index_node: 'parent' must be a bus that is described before it");
    }
    if (taken.contains(node.physicalBus)) {
        table.place("physical_bus").refuse("index_node: another node has this bus already");
    }
}

void readIndexNodes(TomlTable& i2c, I2cDescription& description, DriverRoom& room) {
    std::set<std::int64_t> known;
    std::set<std::int64_t> taken;
    for (const I2cBus& bus : description.buses) {
        known.insert(bus.number);
    }
    i2c.eachTable("index_node", [&](TomlTable& table) {
        IndexNode node = readIndexNode(table);
        checkParent(table, node, known, taken);
        if (node.hasBus()) {
            room.addBus(node.physicalBus, table.place("physical_bus"));
            known.insert(node.physicalBus);
            taken.insert(node.physicalBus);
        }
        description.indexNodes.push_back(std::move(node));
    });
}

TypeAnswer readAnswer(TomlTable& table) {
    using enum TypeAnswer::Root;
    constexpr std::array<std::pair<std::string_view, TypeAnswer::Root>, 3> roots{
        {{"none", none}, {"empty", empty}, {"nodes", nodes}}};
    TypeAnswer answer{.status = number<std::int32_t>(table, "status")};
    const std::string word = table.text("root").value_or(answer.status == 0 ? "nodes" : "none");
    const auto* const root =
        std::ranges::find(roots, word, &std::pair<std::string_view, TypeAnswer::Root>::first);
    if (root == roots.end()) {
        table.place("root").refuse("type: 'root' must be none, empty or nodes");
    }
    answer.root = root->second;
    return answer;
}

void readAnswers(TomlTable& i2c, I2cDescription& description) {
    DescribedOnce types("type");
    i2c.eachTable("type", [&](TomlTable& table) {
        const std::uint8_t type = requiredDeviceType(table);
        types.note(type, table.place("device_type"));
        description.answers[type] = readAnswer(table);
    });
}

} // namespace

void readI2c(TomlTable& root, Board& board) {
    auto table = root.table("i2c");
    if (!table) {
        return;
    }
    DriverRoom room;
    readBuses(*table, board.i2c, room);
    readIndexNodes(*table, board.i2c, room);
    readAnswers(*table, board.i2c);
    table->finish();
}

} // namespace board
