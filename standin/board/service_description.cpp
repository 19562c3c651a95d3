#include "standin/board/service_description.h"

#include "standin/service/value_message.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace standin {

namespace {

std::optional<Value> valueOf(const toml::node& node) {
    if (const auto* array = node.as_array()) {
        Value::List list;
        for (const auto& element : *array) {
            auto value = valueOf(element);
            if (!value) {
                return std::nullopt;
            }
            list.push_back(std::move(*value));
        }
        return Value(std::move(list));
    }
    if (const auto truth = node.value_exact<bool>()) {
        return Value(*truth);
    }
    if (const auto number = node.value_exact<std::int64_t>()) {
        return Value(*number);
    }
    if (const auto number = node.value_exact<double>()) {
        return Value(*number);
    }
    if (auto text = node.value_exact<std::string>()) {
        return Value(std::move(*text));
    }
    return std::nullopt;
}

// Reads `signature` and `value` of a table, and refuses a value that does not fit the signature.
std::pair<std::string, Value> readTyped(TomlTable& table) {
    std::string signature = table.text("signature").value_or("");
    const auto* const node = table.node("value");
    auto value = node == nullptr ? std::nullopt : valueOf(*node);
    if (!value || !valueFits(signature, *value)) {
        table.place().refuse("'value' does not fit the signature '" + signature + "'");
    }
    return {std::move(signature), std::move(*value)};
}

// A plain value is a boolean (b), a number (q) or a text (s). Any other type is written out, like
// { signature = "(yyyyyy)", value = [1, 2, 3, 4, 5, 6] }.
Property readProperty(TomlTable& table, const std::string& name) {
    if (table.node(name)->is_table()) {
        auto described = table.table(name);
        auto [signature, value] = readTyped(*described);
        described->finish();
        return {name, std::move(signature), std::move(value)};
    }
    auto value = valueOf(*table.node(name));
    if (value) {
        for (const char* const signature : {"b", "q", "s"}) {
            if (valueFits(signature, *value)) {
                return {name, signature, std::move(*value)};
            }
        }
    }
    table.place(name).refuse("'" + name +
                             "' must be true, false, a number from 0 to 65535 or a text; " +
                             "write any other type as { signature = ..., value = ... }");
}

std::vector<Property> readProperties(TomlTable& table) {
    std::vector<Property> properties;
    for (const std::string& name : table.names()) {
        properties.push_back(readProperty(table, name));
    }
    return properties;
}

// Paths and interfaces may be written without the prefix that all of the service's have.
std::string readPath(TomlTable& table) {
    std::string path = table.text("path").value_or("");
    return path.empty() || path.starts_with('/') ? path : std::string(servicePathPrefix) + path;
}

std::string readInterface(TomlTable& table) {
    std::string name = table.text("interface").value_or("");
    return name.empty() || name.find('.') != std::string::npos
               ? name
               : std::string(serviceInterfacePrefix) + name;
}

void readObject(TomlTable& table, ServiceDescription& service) {
    PublishedInterface changed{readPath(table), readInterface(table), {}};
    if (changed.path.empty() || changed.interface.empty()) {
        table.place().refuse("object: needs 'path' and 'interface'");
    }
    PublishedInterface removal = changed;
    table.eachText("without", [&](const std::string& name, const Place&) {
        removal.properties.push_back({name, "", false});
    });
    if (table.boolean("empty").value_or(false) || !removal.properties.empty()) {
        service.removals.push_back(std::move(removal));
    }
    if (auto properties = table.table("properties")) {
        changed.properties = readProperties(*properties);
        properties->finish();
    }
    service.additions.push_back(std::move(changed));
}

ServiceOrder::Action readAction(TomlTable& table) {
    using enum ServiceOrder::Action;
    constexpr std::array<std::pair<std::string_view, ServiceOrder::Action>, 4> actions{
        {{"answer", answer}, {"error", error}, {"reply", reply}, {"leave", leave}}};
    const std::string word = table.text("action").value_or("answer");
    const auto* const found =
        std::ranges::find(actions, word, &std::pair<std::string_view, ServiceOrder::Action>::first);
    if (found == actions.end()) {
        table.place("action").refuse("order: 'action' must be answer, error, reply or leave");
    }
    return found->second;
}

void readOrder(TomlTable& table, ServiceDescription& service) {
    constexpr std::int64_t longestDelay = 3'600'000;
    ServiceOrder order{
        .path = readPath(table),
        .interface = readInterface(table),
        .after = static_cast<int>(
            table.integer("after", 0, std::numeric_limits<int>::max()).value_or(0)),
        .delay = std::chrono::milliseconds(table.integer("delay_ms", 0, longestDelay).value_or(0)),
        .action = readAction(table),
        .name = table.text("error").value_or("org.freedesktop.DBus.Error.Failed"),
        .text = table.text("text").value_or("ordered by the board description"),
    };
    if (order.action == ServiceOrder::Action::reply && table.node("value") != nullptr) {
        std::tie(order.signature, order.value) = readTyped(table);
    }
    service.orders.push_back(std::move(order));
}

} // namespace

void readService(TomlTable& root, Board& board) {
    ServiceDescription& service = board.service;
    service.info = {{"FRUreadComplete", "b", true}, {"SlotMappingComplete", "b", true}};
    auto table = root.table("service");
    if (!table) {
        return;
    }
    if (auto info = table->table("info")) {
        service.info = readProperties(*info);
        info->finish();
    }
    table->eachTable("object", [&](TomlTable& object) { readObject(object, service); });
    table->eachTable("order", [&](TomlTable& order) { readOrder(order, service); });
    table->finish();
}

} // namespace standin
