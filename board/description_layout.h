// The tables of a board description, as far as a description changes them on top of its base.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <toml++/toml.h>

namespace board {

/// A key whose value tells an element of an array from the others.
struct IdentityKey {
    std::string_view key;
    /// @param value  null when the key is not given
    /// @return none for a value that cannot be an identity
    std::optional<std::string> (*read)(const toml::node* value);
};

/// Keys that cannot stand beside other keys. A description that gives one side drops the other one.
struct Alternatives {
    std::span<const std::string_view> some;
    std::span<const std::string_view> others; ///< empty: all other keys
};

/// A table or an array in a description. A key without a layout has a plain value.
struct Layout {
    enum class Kind : std::uint8_t {
        table,     ///< a table whose keys are those of the format
        names,     ///< a table whose keys are names of things
        numbers,   ///< a table whose keys are numbers of things
        registers, ///< a table whose keys are raw addresses
        list,      ///< an array of tables
        texts,     ///< an array of texts
    };

    std::string_view key;
    Kind kind;
    std::span<const Layout> members{};       ///< in a table, or in each table of a list
    std::span<const IdentityKey> identity{}; ///< of a list; empty: its elements have only positions
    std::span<const Alternatives> alternatives{};
    bool newestFirst = false; ///< of a list: new elements stand before those of the base

    /// Whether the keys of the table are free: they name or number things.
    [[nodiscard]] constexpr bool hasNames() const {
        return kind == Kind::names || kind == Kind::numbers || kind == Kind::registers;
    }
};

/// The layout of the whole description.
[[nodiscard]] const Layout& boardLayout();

/// The layout of a key; null for a key with a plain value.
[[nodiscard]] const Layout* memberOf(const Layout& layout, std::string_view key);

} // namespace board
