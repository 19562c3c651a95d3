// Values out of a received message into standard containers.
//
// The signature that a C++ type stands for is demanded of the message; what does not fit ends the
// reading with an SdBusError that names the call of sd-bus and the kind of value. Only a variant is
// lenient: contents that none of its alternatives can hold are stepped over.
#pragma once

#include "sdbusplus/exception.hpp"
#include "sdbusplus/message/types.hpp"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

namespace sdbusplus::message::details {

using sdbusplus::details::checked;

/// Reads values of type T, each at the message's read position.
template <typename T>
struct Reader;

template <typename T>
void readValue(sd_bus_message* message, T& value) {
    Reader<T>().read(message, value);
}

template <typename T>
concept Number = std::is_arithmetic_v<T> && !std::same_as<T, bool>;

template <Number T>
struct Reader<T> {
    static void read(sd_bus_message* message, T& value) {
        checked(sd_bus_message_read_basic(message, types::code<T>, &value),
                "sd_bus_message_read_basic fundamental");
    }
};

template <>
struct Reader<bool> {
    static void read(sd_bus_message* message, bool& value) {
        int number = 0; // sd-bus hands a boolean out as an int
        checked(sd_bus_message_read_basic(message, SD_BUS_TYPE_BOOLEAN, &number),
                "sd_bus_message_read_basic bool");
        value = number != 0;
    }
};

/// The text at the read position; it lives as long as the message.
inline const char* readText(sd_bus_message* message, char code) {
    const char* text = "";
    checked(sd_bus_message_read_basic(message, code, static_cast<void*>(&text)),
            "sd_bus_message_read_basic string");
    return text;
}

template <>
struct Reader<std::string> {
    static void read(sd_bus_message* message, std::string& value) {
        value = readText(message, SD_BUS_TYPE_STRING);
    }
};

template <>
struct Reader<object_path> {
    static void read(sd_bus_message* message, object_path& value) {
        value.str = readText(message, SD_BUS_TYPE_OBJECT_PATH);
    }
};

/// What the calls on an array are named in errors, by the kind of container that it is read into.
struct ArrayCalls {
    const char* enter;
    const char* atEnd;
    const char* exit;
};

inline constexpr ArrayCalls vectorCalls{
    .enter = "sd_bus_message_enter_container emplace_back_container",
    .atEnd = "sd_bus_message_at_end emplace_back_container",
    .exit = "sd_bus_message_exit_container emplace_back_container",
};

inline constexpr ArrayCalls mapCalls{
    .enter = "sd_bus_message_enter_container emplace_container",
    .atEnd = "sd_bus_message_at_end emplace_container",
    .exit = "sd_bus_message_exit_container emplace_container",
};

/// An array read element by element: @p readElement until there is none left.
template <typename ReadElement>
void readArray(sd_bus_message* message, const char* element, const ArrayCalls& calls,
               ReadElement readElement) {
    checked(sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, element), calls.enter);
    while (checked(sd_bus_message_at_end(message, 0), calls.atEnd) == 0) {
        readElement();
    }
    checked(sd_bus_message_exit_container(message), calls.exit);
}

// Numbers too come one by one: sd-bus hands an array out as it stands in the message only when the
// sender is of this machine's byte order.
template <typename Element, typename Allocator>
struct Reader<std::vector<Element, Allocator>> {
    static void read(sd_bus_message* message, std::vector<Element, Allocator>& values) {
        Reader<Element> reader;
        readArray(message, types::SignatureOf<Element>::value.text, vectorCalls, [&] {
            Element value{};
            reader.read(message, value);
            values.push_back(std::move(value));
        });
    }
};

template <typename Key, typename Value, typename Order, typename Allocator>
struct Reader<std::map<Key, Value, Order, Allocator>> {
    // Of entries with the same key the first counts.
    static void read(sd_bus_message* message, std::map<Key, Value, Order, Allocator>& entries) {
        Reader<Value> reader;
        readArray(message, types::entry<Key, Value>.text, mapCalls, [&] {
            checked(sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY,
                                                   types::sequence<Key, Value>.text),
                    "sd_bus_message_enter_container pair");
            Key key{};
            readValue(message, key);
            const std::size_t before = entries.size();
            // Many services send their entries in order: there it costs one comparison.
            const auto entry = entries.emplace_hint(entries.end(), std::move(key), Value{});
            if (entries.size() > before) {
                reader.read(message, entry->second);
            } else {
                Value repeated{};
                reader.read(message, repeated);
            }
            checked(sd_bus_message_exit_container(message), "sd_bus_message_exit_container pair");
        });
    }
};

template <typename... Members>
struct Reader<std::tuple<Members...>> {
    static void read(sd_bus_message* message, std::tuple<Members...>& members) {
        checked(sd_bus_message_enter_container(message, SD_BUS_TYPE_STRUCT,
                                               types::sequence<Members...>.text),
                "sd_bus_message_enter_container tuple");
        std::apply([message](auto&... member) { (readValue(message, member), ...); }, members);
        checked(sd_bus_message_exit_container(message), "sd_bus_message_exit_container tuple");
    }
};

/// What errors name the search for a variant's alternative, whichever call failed in it.
inline constexpr const char* variantCheck = "sd_bus_message_verify_type variant";

/// The signature of the contents of the variant at the read position; empty when there is none.
inline std::string_view variantContents(sd_bus_message* message) {
    char type = 0;
    const char* contents = nullptr;
    const int found = checked(sd_bus_message_peek_type(message, &type, &contents), variantCheck);
    return found > 0 && type == SD_BUS_TYPE_VARIANT ? contents : "";
}

template <typename... Alternatives>
struct Reader<std::variant<Alternatives...>> {
    using Variant = std::variant<Alternatives...>;

    // Takes the first alternative that the contents fit; the first one's default when none does.
    void read(sd_bus_message* message, Variant& value) {
        const std::size_t index = firstThatFits(message);
        if (index == signatures.size()) {
            checked(sd_bus_message_skip(message, "v"), "sd_bus_message_skip variant");
            value = Variant{};
            return;
        }
        likely_ = index;
        checked(
            sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, signatures[index].data()),
            "sd_bus_message_enter_container variant");
        readers[index](message, value);
        checked(sd_bus_message_exit_container(message), "sd_bus_message_exit_container variant");
    }

private:
    // sd_bus_message_verify_type looks at the contents anew each time: to ask it for one of twenty
    // alternatives after the other takes longer than all other reading. So it is asked for the
    // likely one; when that is wrong, one look tells which of the others it is.
    std::size_t firstThatFits(sd_bus_message* message) const {
        if (checked(sd_bus_message_verify_type(message, SD_BUS_TYPE_VARIANT,
                                               signatures[likely_].data()),
                    variantCheck) > 0) {
            return likely_;
        }
        const std::string_view contents = variantContents(message);
        const auto first = std::ranges::find_if(signatures, [contents](std::string_view own) {
            return own.size() == contents.size() && own[0] == contents[0] && own == contents;
        });
        return static_cast<std::size_t>(first - signatures.begin());
    }

    template <typename Alternative>
    static void readAs(sd_bus_message* message, Variant& value) {
        readValue(message, value.template emplace<Alternative>());
    }

    // Both in the order of the alternatives; the signatures are closed by a NUL.
    static constexpr std::array<std::string_view, sizeof...(Alternatives)> signatures{
        types::SignatureOf<Alternatives>::value.view()...};
    static constexpr std::array<void (*)(sd_bus_message*, Variant&), sizeof...(Alternatives)>
        readers{readAs<Alternatives>...};

    // The alternative of the value before, for the values of a container are often of one type. It
    // is the first of its signature.
    std::size_t likely_ = 0;
};

} // namespace sdbusplus::message::details
