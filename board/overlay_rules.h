// The rules that hold wherever a description changes its base, and how it moves values.
#pragma once

#include "board/description_layout.h"
#include "board/toml_table.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace board {

constexpr std::string_view removeKey = "remove";
constexpr std::string_view positionKey = "position";

/// The place of a value that was read from a file.
[[nodiscard]] Place placeIn(const toml::node& node);

[[nodiscard]] std::vector<std::string> keysOf(const toml::table& table);

/// Whether a value is a table that takes out the thing in whose place it stands.
[[nodiscard]] bool isRemoval(const toml::node& node);

/// Moves the values whose keys the description does not give. They keep their places.
void moveRest(toml::table& over, toml::table& base);

/// Moves all elements.
void appendAll(toml::array& to, toml::array& from);

/// What a description with a base, or without one, may say.
struct OverlayRules {
    bool hasBase;
    Errors* errors; ///< if given, gets the errors

    /// Refuses a key that only a description with a base has.
    void requireBase(const Place& place, std::string_view what, std::string_view name) const;

    /// Refuses a removal that has other keys than those that find the thing.
    void checkRemoval(const toml::table& removal, std::string_view what,
                      std::span<const IdentityKey> identity = {}) const;

    /// Takes the thing `name` out of the base.
    /// @param over      has the removal under `name`, and loses it
    /// @param baseName  its key in the base; empty: the base does not have the thing
    /// @param what      what the tables describe
    void takeOut(toml::table& over, const std::string& name, toml::table& base,
                 const std::string& baseName, std::string_view what) const;

    [[noreturn]] static void refuseMissing(const Place& place, std::string_view what,
                                           std::string_view name, const toml::table& base);
};

} // namespace board
