#include "i2c/device_types.h"
#include "zolt_board/board_json.h"

#include <array>
#include <string_view>
#include <utility>

namespace zolt_board {

namespace {

using board::I2cBus;
using board::I2cDevice;
using board::IndexNode;

Json propertiesToJson(const board::I2cProperties& properties) {
    Json json = Json::array();
    for (const auto& [id, value] : properties) {
        json.push_back({{"id", id}, {"value", value}});
    }
    return json;
}

Json deviceToJson(const I2cDevice& device) {
    Json json{{"address", device.address},
              {"memory", bytesToJson(device.memory)},
              {"pointer_width", device.pointerWidth},
              {"read_only", device.readOnly}};
    json["node"] = device.node ? Json{{"device_type", deviceTypeToJson(device.node->deviceType)},
                                      {"index", device.node->index}}
                               : Json();
    json["properties"] = propertiesToJson(device.properties);
    return json;
}

Json busToJson(const I2cBus& bus) {
    Json devices = Json::array();
    for (const I2cDevice& device : bus.devices) {
        devices.push_back(deviceToJson(device));
    }
    return {{"number", bus.number},
            {"properties", propertiesToJson(bus.properties)},
            {"devices", std::move(devices)}};
}

Json nodeToJson(const IndexNode& node) {
    Json subNodes = Json::array();
    for (const board::SubNode& sub : node.subNodes) {
        subNodes.push_back({{"discoverable", sub.discoverable},
                            {"sub_index", sub.subIndex},
                            {"sub_node_count", sub.subNodeCount},
                            {"name", textToJson(sub.name)}});
    }
    Json json{{"device_type", deviceTypeToJson(node.deviceType)},
              {"index", node.index},
              {"name", textToJson(node.name)},
              {"physical_bus", node.physicalBus},
              {"parent", node.parent ? Json(*node.parent) : Json()},
              {"discoverable", node.discoverable},
              {"picpwr", node.picpwrId},
              {"is_sl_src", node.isSlSrc},
              {"sl_src", node.slSrc},
              {"hw_uid", node.hwUid},
              {"slot_number", node.slotNumber},
              {"slot_type", node.slotType},
              {"bay_id", node.bayId},
              {"sub_node_count", node.subNodeCount ? Json(*node.subNodeCount) : Json()}};
    json["sub_nodes"] = std::move(subNodes);
    return json;
}

std::string_view rootWord(board::TypeAnswer::Root root) {
    constexpr std::array<std::string_view, 3> words{"none", "empty", "nodes"};
    return words[static_cast<std::size_t>(root)];
}

} // namespace

Json deviceTypeToJson(std::uint8_t code) {
    return {{"code", code}, {"name", zolt::deviceTypeName(code)}};
}

Json i2cToJson(const board::I2cDescription& i2c) {
    Json json;
    json["buses"] = Json::array();
    for (const I2cBus& bus : i2c.buses) {
        json["buses"].push_back(busToJson(bus));
    }
    json["index_nodes"] = Json::array();
    for (const IndexNode& node : i2c.indexNodes) {
        json["index_nodes"].push_back(nodeToJson(node));
    }
    json["answers"] = Json::array();
    for (const auto& [deviceType, answer] : i2c.answers) {
        json["answers"].push_back({{"device_type", deviceTypeToJson(deviceType)},
                                   {"status", answer.status},
                                   {"root", rootWord(answer.root)}});
    }
    return json;
}

} // namespace zolt_board
