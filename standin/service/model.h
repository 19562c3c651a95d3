// What the stand-in's service publishes, and where it misbehaves.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace standin {

/// A value for the bus. The signature that goes with it says which type it travels as: whole
/// numbers are integers of any width, lists are arrays, structs and dictionary entries; a variant
/// is a list of its contents' signature and value.
struct Value {
    using List = std::vector<Value>;

    std::variant<bool, std::int64_t, double, std::string, List> content;

    Value(bool truth) : content(truth) {}
    Value(int number) : content(std::int64_t{number}) {}
    Value(std::int64_t number) : content(number) {}
    Value(double number) : content(number) {}
    Value(const char* text) : content(std::string(text)) {}
    Value(std::string text) : content(std::move(text)) {}
    Value(List list) : content(std::move(list)) {}
};

/// A list of these values. (Braces do not serve: of a list in a list compilers make different
/// things.)
template <typename... Values>
[[nodiscard]] Value listOf(Values&&... values) {
    Value::List list;
    list.reserve(sizeof...(values));
    (list.emplace_back(std::forward<Values>(values)), ...);
    return list;
}

struct Property {
    std::string name;
    std::string signature; ///< one complete D-Bus type
    Value value;
};

/// One interface of one object. Several of the same path are interfaces of the same object.
struct PublishedInterface {
    std::string path;
    std::string interface;
    std::vector<Property> properties;
};

/// What the service does in place of its proper answer. The first order that fits a call counts.
struct ServiceOrder {
    enum class Action : std::uint8_t {
        answer, ///< the proper answer, only late
        error,  ///< an error reply of `name` and `text`
        reply,  ///< a reply that holds `signature` and `value` instead
        leave,  ///< no answer: the service leaves the bus for good
    };

    std::string path = {};      ///< object asked; empty for all
    std::string interface = {}; ///< interface whose properties are asked for, or
                                ///< "org.freedesktop.DBus.ObjectManager"; empty for all
    int after = 0;              ///< fitting calls that are answered properly before
    std::chrono::milliseconds delay{0};
    Action action = Action::answer;
    std::string name = {};
    std::string text = {};
    std::string signature = {}; ///< empty: a reply without contents
    Value value = false;
};

struct ServiceModel {
    std::string name = "com.tesk.bmc.zolt"; ///< well-known name on the bus
    std::vector<std::string> managers;      ///< paths of the object managers
    std::vector<PublishedInterface> interfaces;
    std::vector<ServiceOrder> orders;
};

} // namespace standin
