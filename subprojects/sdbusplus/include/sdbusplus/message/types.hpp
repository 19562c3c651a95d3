// Which D-Bus signature a C++ type travels under, as text known while compiling.
#pragma once

#include "sdbusplus/message/native_types.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace sdbusplus::message::types {

/// A signature of Length characters, closed by a NUL as sd-bus wants it.
template <std::size_t Length>
struct Signature {
    char text[Length + 1] = {};

    constexpr Signature() = default;
    constexpr Signature(const char (&literal)[Length + 1]) {
        std::copy(literal, literal + Length, text);
    }
    [[nodiscard]] constexpr std::string_view view() const { return {text, Length}; }
};

template <std::size_t Size>
Signature(const char (&)[Size]) -> Signature<Size - 1>;

template <std::size_t... Lengths>
consteval auto joined(const Signature<Lengths>&... parts) {
    Signature<(Lengths + ... + 0)> whole;
    char* end = whole.text;
    ((end = std::copy(parts.text, parts.text + Lengths, end)), ...);
    return whole;
}

/// Holds the signature of T as `value`; not defined for a type that cannot travel.
template <typename T>
struct SignatureOf;

template <>
struct SignatureOf<bool> {
    static constexpr Signature value{"b"};
};
template <>
struct SignatureOf<std::uint8_t> {
    static constexpr Signature value{"y"};
};
template <>
struct SignatureOf<std::int16_t> {
    static constexpr Signature value{"n"};
};
template <>
struct SignatureOf<std::uint16_t> {
    static constexpr Signature value{"q"};
};
template <>
struct SignatureOf<std::int32_t> {
    static constexpr Signature value{"i"};
};
template <>
struct SignatureOf<std::uint32_t> {
    static constexpr Signature value{"u"};
};
template <>
struct SignatureOf<std::int64_t> {
    static constexpr Signature value{"x"};
};
template <>
struct SignatureOf<std::uint64_t> {
    static constexpr Signature value{"t"};
};
template <>
struct SignatureOf<double> {
    static constexpr Signature value{"d"};
};
template <>
struct SignatureOf<std::string> {
    static constexpr Signature value{"s"};
};
template <>
struct SignatureOf<const char*> {
    static constexpr Signature value{"s"};
};
template <>
struct SignatureOf<object_path> {
    static constexpr Signature value{"o"};
};

template <typename... Alternatives>
struct SignatureOf<std::variant<Alternatives...>> {
    static constexpr Signature value{"v"};
};

/// What stands inside a struct's or a dictionary entry's brackets.
template <typename... Members>
inline constexpr auto sequence = joined(SignatureOf<Members>::value...);

template <typename... Members>
struct SignatureOf<std::tuple<Members...>> {
    static constexpr auto value = joined(Signature{"("}, sequence<Members...>, Signature{")"});
};

template <typename Element, typename Allocator>
struct SignatureOf<std::vector<Element, Allocator>> {
    static constexpr auto value = joined(Signature{"a"}, SignatureOf<Element>::value);
};

/// A dictionary's entry, the element of its array.
template <typename Key, typename Value>
inline constexpr auto entry = joined(Signature{"{"}, sequence<Key, Value>, Signature{"}"});

template <typename Key, typename Value, typename Order, typename Allocator>
struct SignatureOf<std::map<Key, Value, Order, Allocator>> {
    static constexpr auto value = joined(Signature{"a"}, entry<Key, Value>);
};

/// The type code of a type whose signature is a single letter.
template <typename T>
inline constexpr char code = SignatureOf<T>::value.text[0];

} // namespace sdbusplus::message::types
