// Tables of a board description, read key by key.
//
// The code that reads a table asks for each key that the table may have, and gives its limits. The
// first error ends the reading, unless errors are collected. A message names file and line.
#pragma once

#include "board/bytes.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <toml++/toml.h>

namespace board {

/// A board description that cannot be used; what() reads "file:line: reason".
class BoardError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A place in a board description.
struct Place {
    std::string file;
    unsigned line = 0; ///< 0: the file as a whole

    /// @throw BoardError with this place in front of the reason
    [[noreturn]] void refuse(std::string_view reason) const;
};

class TomlTable {
public:
    static constexpr std::size_t mostErrors = 100; ///< that are collected

    /// @param what    what the table describes, for messages ("slot")
    /// @param errors  if given, gets the errors of the table and of the tables in it
    TomlTable(const toml::table& table, std::string file, std::string what,
              std::vector<std::string>* errors = nullptr);

    /// Calls @p read. If errors are collected, an error ends only this call.
    void attempt(const std::function<void()>& read) const;

    // Each of these notes the key as known, and refuses a value of a wrong type or out of range.
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key, std::int64_t lowest,
                                                      std::int64_t highest);
    [[nodiscard]] std::int64_t requiredInteger(std::string_view key, std::int64_t lowest,
                                               std::int64_t highest);
    [[nodiscard]] std::optional<bool> boolean(std::string_view key);
    /// A text of limited length fills a field of bytes. Only such a text may have NUL characters.
    [[nodiscard]] std::optional<std::string> text(std::string_view key,
                                                  std::size_t longest = std::string::npos);

    /// Bytes: one number, an array of numbers, a text of two-digit hexadecimal numbers, or a dump.
    [[nodiscard]] std::optional<Bytes> bytes(std::string_view key);

    /// Calls @p use for each text of an array of texts.
    void eachText(std::string_view key,
                  const std::function<void(const std::string&, const Place&)>& use);

    /// Calls @p use for each table of an array of tables.
    void eachTable(std::string_view key, const std::function<void(TomlTable&)>& use);

    /// The value of the key, of any type; null when the key is not given.
    [[nodiscard]] const toml::node* node(std::string_view key) { return find(key); }

    /// The table under the key; none when the key is not given.
    [[nodiscard]] std::optional<TomlTable> table(std::string_view key);

    /// All keys in the order of the file, for a table whose keys are names of things. Notes them
    /// all as known.
    [[nodiscard]] std::vector<std::string> names();

    /// The place of a key, or of the table when the key is not given.
    [[nodiscard]] Place place(std::string_view key) const;
    [[nodiscard]] Place place() const;

    /// Refuses a key that another kind of thing has, unless this table's kind has it, too.
    /// @param condition  where it is a key, for the message
    void onlyWhere(std::string_view key, std::string_view condition) const;

    /// Refuses a key that is not known, and suggests the most similar known key. Call it last.
    void finish() const;

private:
    [[nodiscard]] const toml::node* find(std::string_view key);
    [[nodiscard]] Place placeOf(const toml::node& node) const;
    [[noreturn]] void refuseUnknown(const toml::key& key) const;
    void refuseNul(std::string_view text, std::string_view key, const Place& place) const;
    [[nodiscard]] std::int64_t integerIn(const toml::node& node, std::string_view key,
                                         std::int64_t lowest, std::int64_t highest) const;

    const toml::table* table_;
    std::string file_;
    std::string what_;
    std::vector<std::string>* errors_;
    std::set<std::string, std::less<>> known_;
};

} // namespace board
