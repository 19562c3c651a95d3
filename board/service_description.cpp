#include "board/service_description.h"

#include "board/bus_names.h"
#include "board/bus_value.h"
#include "board/message_text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>
#include <utility>

namespace board {

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
    auto text = node.value_exact<std::string>();
    if (text && text->find('\0') == std::string::npos) { // no text of the bus has a NUL
        return Value(std::move(*text));
    }
    return std::nullopt;
}

// Reads `signature` and `value` of a table, and refuses a value that does not fit the signature.
// @param what  what the table describes, for messages
std::pair<std::string, Value> readTyped(TomlTable& table, const std::string& what) {
    const auto signature = table.text("signature");
    const auto* const node = table.node("value");
    if (!signature || node == nullptr) {
        table.place().refuse(what + ": " + (signature ? "'value'" : "'signature'") +
                             " is missing beside " + (signature ? "'signature'" : "'value'"));
    }
    if (!isCompleteType(*signature)) {
        table.place("signature")
            .refuse(what + ": 'signature' must be one complete D-Bus type, not " +
                    inQuotes(*signature));
    }
    auto value = valueOf(*node);
    if (!value || !valueFits(*signature, *value)) {
        table.place("value").refuse(what + ": 'value' does not fit the signature " +
                                    inQuotes(*signature));
    }
    return {*signature, std::move(*value)};
}

// A plain value is a boolean (b), a number (q) or a text (s). Any other type is written out, like
// { signature = "(yyyyyy)", value = [1, 2, 3, 4, 5, 6] }.
Property readProperty(TomlTable& table, const std::string& name) {
    if (table.node(name)->is_table()) {
        auto described = table.table(name);
        auto [signature, value] = readTyped(*described, name);
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
    table.place(name).refuse(inQuotes(name) +
                             " must be true, false, a number from 0 to 65535 or a text; " +
                             "write any other type as { signature = ..., value = ... }");
}

// Refuses a name that the bus does not allow.
// @param kind  what the name must be
void requireName(bool isName, const std::string& name, const char* kind, const Place& place) {
    if (!isName) {
        place.refuse(inQuotes(name) + " is no " + kind + " of D-Bus");
    }
}

std::vector<Property> readProperties(TomlTable& table) {
    std::vector<std::string> names = table.names();
    std::ranges::sort(names); // the service lists properties by name
    std::vector<Property> properties;
    for (const std::string& name : names) {
        requireName(isPropertyName(name), name, "property name", table.place(name));
        properties.push_back(readProperty(table, name));
    }
    return properties;
}

// Returns an empty text when the key is not given.
std::string readPath(TomlTable& table) {
    const auto path = table.text("path");
    if (!path) {
        return {};
    }
    requireName(!path->empty() && isObjectPath(fullPath(*path)), *path, "object path",
                table.place("path"));
    return fullPath(*path);
}

std::string readInterface(TomlTable& table) {
    const auto interface = table.text("interface");
    if (!interface) {
        return {};
    }
    requireName(isInterfaceName(fullInterface(*interface)), *interface, "interface name",
                table.place("interface"));
    return fullInterface(*interface);
}

std::string readErrorName(TomlTable& table) {
    std::string name = table.text("error").value_or("org.freedesktop.DBus.Error.Failed");
    requireName(isInterfaceName(name), name, "error name", table.place("error"));
    return name;
}

void readObject(TomlTable& table, ServiceDescription& service) {
    PublishedInterface changed{readPath(table), readInterface(table), {}};
    if (changed.path.empty() || changed.interface.empty()) {
        table.place().refuse("object: needs 'path' and 'interface'");
    }
    PublishedInterface removal = changed;
    table.eachText("without", [&](const std::string& name, const Place& place) {
        requireName(isPropertyName(name), name, "property name", place);
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
        .name = readErrorName(table),
        .text = table.text("text").value_or("ordered by the board description"),
    };
    const bool isReply = order.action == ServiceOrder::Action::reply;
    if (isReply && (table.node("value") != nullptr || table.node("signature") != nullptr)) {
        std::tie(order.signature, order.value) = readTyped(table, "order");
    }
    table.onlyWhere("signature", "'action' is 'reply'", "action");
    table.onlyWhere("value", "'action' is 'reply'", "action");
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

} // namespace board
