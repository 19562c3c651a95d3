// The model of the stand-in's service: what it publishes, and how it misbehaves.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace board {

/// A value for the bus. The signature that goes with it gives its D-Bus type. A whole number serves
/// for integers of any width. A list serves for arrays, structs and dictionary entries. A variant
/// is a list of two: the signature and the value of its contents.
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

    bool operator==(const Value&) const = default;
};

/// Makes a list of values. (Braces will not do: compilers disagree about a braced list in a list.)
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

    bool operator==(const Property&) const = default;
};

/// One interface of one object. Entries with the same path belong to the same object.
struct PublishedInterface {
    std::string path;
    std::string interface;
    std::vector<Property> properties;

    bool operator==(const PublishedInterface&) const = default;
};

/// What the service does in place of its normal answer. The orders that fit a call are asked from
/// the first to the last, and the first one that is due applies. An order counts each call for
/// which it is asked.
struct ServiceOrder {
    enum class Action : std::uint8_t {
        answer, ///< the normal answer, after the delay
        error,  ///< an error reply of `name` and `text`
        reply,  ///< a reply with the value `value` of type `signature`
        leave,  ///< no answer: the service leaves the bus for good
    };

    /// The delay of a call that gets no answer.
    static constexpr auto forever = std::chrono::milliseconds::max();

    std::string path = {};              ///< object that is called; empty: any
    std::string interface = {};         ///< interface whose properties are asked for, or
                                        ///< "org.freedesktop.DBus.ObjectManager"; empty: any
    int after = 0;                      ///< number of fitting calls that the order lets pass first
    int times = 0;                      ///< number of calls to which the order applies; 0: all
    std::chrono::milliseconds delay{0}; ///< of the answer; or `forever`
    Action action = Action::answer;
    std::string name = {};
    std::string text = {};
    std::string signature = {}; ///< empty: the reply has no contents
    Value value = false;
};

struct ServiceModel {
    std::string name = "com.tesk.bmc.zolt"; ///< well-known name on the bus
    std::vector<std::string> managers;      ///< paths of the object managers
    std::vector<PublishedInterface> interfaces;
    std::vector<ServiceOrder> orders;
};

} // namespace board
