// The real library's path of an object, in the only place where its older versions had it.
#pragma once

#include <compare>
#include <string>

namespace sdbusplus::message {

struct object_path {
    std::string str;

    object_path() = default;
    object_path(std::string path);

    friend bool operator==(const object_path&, const object_path&) = default;
    // NOLINTNEXTLINE(modernize-use-nullptr): it means the 0 that the compiler compares with.
    friend auto operator<=>(const object_path&, const object_path&) = default;
};

} // namespace sdbusplus::message
