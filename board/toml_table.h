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

    /// This place in a message about another one: "line 7", or "FILE:7" of another file.
    [[nodiscard]] std::string seenFrom(const Place& other) const;

    /// @throw BoardError with this place in front of the reason
    [[noreturn]] void refuse(std::string_view reason) const;
};

/// Collects the messages of errors, at most 100.
using Errors = std::vector<std::string>;

/// Calls @p read. If there is a list of errors, it gets the message of an error, which then ends
/// only this call.
void attempt(Errors* errors, const std::function<void()>& read);

/// The place of a node or key. @param file  for a node that was not read from a file
[[nodiscard]] Place placeOf(const toml::source_region& source, const std::string& file);

/// Learns which keys the code that reads a description asks for.
class KeyObserver {
public:
    KeyObserver() = default;
    KeyObserver(const KeyObserver&) = delete;
    KeyObserver& operator=(const KeyObserver&) = delete;
    virtual ~KeyObserver() = default;

    /// @param path   the keys that lead to the value, "slot.module.type"; "*" for the name of a
    /// thing
    /// @param kind   "integer", "boolean", "text", "bytes", "texts", "tables", "table", "names" or
    ///               "any"
    /// @param lowest, highest  of an integer; else 0
    virtual void asked(const std::string& path, std::string_view kind, std::int64_t lowest,
                       std::int64_t highest) = 0;
};

/// What all tables of one description share.
struct Reading {
    std::vector<std::string> files; ///< the description, behind the bases that it takes over
    Errors* errors = nullptr;       ///< if given, gets the errors of all tables
    KeyObserver* observer = nullptr;
};

class TomlTable {
public:
    /// @param what     what the table describes, for messages ("slot")
    /// @param reading  outlives the table
    TomlTable(const toml::table& table, std::string what, const Reading& reading);

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
    [[nodiscard]] const toml::node* node(std::string_view key) { return find(key, "any"); }

    /// The table under the key; none when the key is not given.
    [[nodiscard]] std::optional<TomlTable> table(std::string_view key);

    /// All keys in the order of the file, those of a base first, for a table whose keys are names
    /// of things. Notes them all as known.
    [[nodiscard]] std::vector<std::string> names();

    /// The place of a key, or of the table when the key is not given.
    [[nodiscard]] Place place(std::string_view key) const;
    [[nodiscard]] Place place() const;

    /// Refuses a key that another kind of thing has, unless this table's kind has it, too. If a
    /// later file than that of the key has changed the kind, the key counts for nothing.
    /// @param condition  where it is a key, for the message
    /// @param kind       the key that tells the kind of the thing
    void onlyWhere(std::string_view key, std::string_view condition, std::string_view kind);

    /// Refuses a key that is not known, and suggests the most similar known key. Call it last.
    void finish() const;

private:
    /// @param kind  of the value that the caller wants, as a KeyObserver learns it
    [[nodiscard]] const toml::node* find(std::string_view key, std::string_view kind,
                                         std::int64_t lowest = 0, std::int64_t highest = 0);
    [[nodiscard]] TomlTable inner(const toml::table& table, std::string_view key) const;
    [[nodiscard]] std::string pathTo(std::string_view key) const;
    [[nodiscard]] Place placeOf(const toml::node& node) const;
    [[nodiscard]] std::size_t rankOf(const toml::source_region& source) const;
    [[noreturn]] void refuseUnknown(const toml::key& key) const;
    void refuseNul(std::string_view text, std::string_view key, const Place& place) const;
    [[nodiscard]] std::int64_t integerIn(const toml::node& node, std::string_view key,
                                         std::int64_t lowest, std::int64_t highest) const;

    const toml::table* table_;
    std::string what_;
    const Reading* reading_;
    std::string path_;      ///< for the observer
    bool hasNames_ = false; ///< its keys are names of things
    std::set<std::string, std::less<>> known_;
};

} // namespace board
