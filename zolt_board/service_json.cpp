#include "board/bus_names.h"
#include "board/published_board.h"
#include "zolt_board/board_json.h"

#include <map>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

using board::FaultRule;
using board::PublishedInterface;
using board::ServiceOrder;

// The rules that make calls on an object fail, by the object's path.
using Failures = std::map<std::string, Json, std::less<>>;

Failures failuresOf(const board::Board& board) {
    Failures failures;
    for (std::size_t i = 0; i < board.faults.size(); ++i) {
        const FaultRule& rule = board.faults[i];
        if (rule.kind == board::FaultKind::object) {
            failures[board::fullPath(rule.subject)].push_back(failureToJson(rule, i));
        }
    }
    return failures;
}

Json interfaceToJson(const PublishedInterface& published, const Failures& failures) {
    Json properties = Json::array();
    for (const board::Property& property : published.properties) {
        properties.push_back({{"name", property.name},
                              {"signature", property.signature},
                              {"value", valueToJson(property.signature, property.value)}});
    }
    Json json{{"path", published.path},
              {"interface", published.interface},
              {"properties", std::move(properties)}};
    if (const auto found = failures.find(published.path); found != failures.end()) {
        json["failures"] = found->second;
    }
    return json;
}

void addAction(const ServiceOrder& order, Json& json) {
    using Action = ServiceOrder::Action;
    switch (order.action) {
    case Action::answer:
        json["action"] = "answer";
        break;
    case Action::error:
        json["action"] = "error";
        json["error"] = order.name;
        json["text"] = order.text;
        break;
    case Action::reply:
        json["action"] = "reply";
        if (!order.signature.empty()) {
            json["signature"] = order.signature;
            json["value"] = valueToJson(order.signature, order.value);
        }
        break;
    case Action::leave:
        json["action"] = "leave";
        break;
    }
}

Json orderToJson(const ServiceOrder& order) {
    Json json{{"path", order.path.empty() ? Json() : Json(order.path)},
              {"interface", order.interface.empty() ? Json() : Json(order.interface)},
              {"after", order.after},
              {"times", order.times == 0 ? Json() : Json(order.times)},
              {"delay_ms", order.delay.count()}};
    addAction(order, json);
    return json;
}

bool isAbsent(const board::Board& board, board::FaultKind kind) {
    return std::ranges::find(board.faults, kind, &FaultRule::kind) != board.faults.end();
}

} // namespace

Json serviceToJson(const board::Board& board) {
    const board::ServiceModel model = board::publishBoard(board);
    const Failures failures = failuresOf(board);
    Json json{{"name", model.name},
              {"has_bus", !isAbsent(board, board::FaultKind::bus)},
              {"has_service", !isAbsent(board, board::FaultKind::service)},
              {"managers", model.managers}};
    Json interfaces = Json::array();
    for (const PublishedInterface& published : model.interfaces) {
        interfaces.push_back(interfaceToJson(published, failures));
    }
    json["interfaces"] = std::move(interfaces);
    Json orders = Json::array();
    for (const ServiceOrder& order : board.service.orders) {
        orders.push_back(orderToJson(order));
    }
    json["orders"] = std::move(orders);
    return json;
}

} // namespace zolt_board
