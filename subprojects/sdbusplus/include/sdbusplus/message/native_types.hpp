// D-Bus strings that are no plain text, each with a type of its own.
#pragma once

#include <compare>
#include <string>
#include <utility>

namespace sdbusplus {

/// The path of an object, signature "o". Ordered by the bytes of its text.
struct object_path {
    std::string str;

    object_path() = default;
    object_path(std::string path) : str(std::move(path)) {}

    operator const std::string&() const noexcept { return str; }

    friend bool operator==(const object_path&, const object_path&) = default;
    // NOLINTNEXTLINE(modernize-use-nullptr): it means the 0 that the compiler compares with.
    friend auto operator<=>(const object_path&, const object_path&) = default;
};

} // namespace sdbusplus
