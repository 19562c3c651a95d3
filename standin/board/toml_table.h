// Tables of a board description, read key by key.
//
// Whoever reads a table names every key that may stand in it, with its limits. What is wrong is
// told with file and line, at the first place where it is.
#pragma once

#include "standin/board/bytes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <toml++/toml.h>

namespace standin {

/// A board description that cannot be used; what() reads "file:line: reason".
class BoardError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A place in a board description.
struct Place {
    std::string file;
    unsigned line = 0; ///< 0: the file as a whole

    /// @throw BoardError with this place in front
    [[noreturn]] void refuse(std::string_view reason) const;
};

class TomlTable {
public:
    /// @param what  what the table describes, for the messages ("slot")
    TomlTable(const toml::table& table, std::string file, std::string what);

    // Each of these notes the key as known, and refuses a value of another kind or out of range.
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key, std::int64_t lowest,
                                                      std::int64_t highest);
    [[nodiscard]] std::int64_t requiredInteger(std::string_view key, std::int64_t lowest,
                                               std::int64_t highest);
    [[nodiscard]] std::optional<bool> boolean(std::string_view key);
    [[nodiscard]] std::optional<std::string> text(std::string_view key,
                                                  std::size_t longest = std::string::npos);

    /// Bytes: one number, an array of numbers, or a text of two-digit hexadecimal numbers.
    [[nodiscard]] std::optional<Bytes> bytes(std::string_view key);

    /// Calls @p use for each text of an array of texts.
    void eachText(std::string_view key,
                  const std::function<void(const std::string&, const Place&)>& use);

    /// Calls @p use for each table of an array of tables.
    void eachTable(std::string_view key, const std::function<void(TomlTable&)>& use);

    /// Whatever stands under the key; null when nothing does.
    [[nodiscard]] const toml::node* node(std::string_view key) { return find(key); }

    /// The table of that name, or none.
    [[nodiscard]] std::optional<TomlTable> table(std::string_view key);

    /// Every key, for a table whose keys are names of things: they are all known then.
    [[nodiscard]] std::vector<std::string> names();

    /// Where a key stands, or the table itself.
    [[nodiscard]] Place place(std::string_view key) const;
    [[nodiscard]] Place place() const;

    /// Refuses what no one asked for, with the known key that comes nearest. Call it last.
    void finish() const;

private:
    [[nodiscard]] const toml::node* find(std::string_view key);
    [[nodiscard]] Place placeOf(const toml::node& node) const;
    [[nodiscard]] std::int64_t integerIn(const toml::node& node, std::string_view key,
                                         std::int64_t lowest, std::int64_t highest) const;

    const toml::table* table_;
    std::string file_;
    std::string what_;
    std::vector<std::string> known_;
};

} // namespace standin
