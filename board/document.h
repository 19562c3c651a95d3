// A board description as data that is to be written: tables whose keys keep their order.
#pragma once

#include "board/bytes.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace board {

/// A whole number, and how people write it.
struct WrittenNumber {
    std::int64_t value = 0;
    unsigned hexDigits = 0; ///< at least so many digits behind 0x; 0: decimal
};

struct WrittenValue;
using WrittenList = std::vector<WrittenValue>;
using WrittenRow = std::vector<std::pair<std::string, WrittenValue>>;

/// One value. Bytes are written as a text of hexadecimal numbers, a row as an inline table.
struct WrittenValue {
    std::variant<bool, WrittenNumber, double, std::string, Bytes, WrittenList, WrittenRow> content;

    WrittenValue(bool truth) : content(truth) {}
    WrittenValue(WrittenNumber number) : content(number) {}
    WrittenValue(double number) : content(number) {}
    WrittenValue(const char* text) : content(std::string(text)) {}
    WrittenValue(std::string text) : content(std::move(text)) {}
    WrittenValue(Bytes bytes) : content(std::move(bytes)) {}
    WrittenValue(WrittenList list) : content(std::move(list)) {}
    WrittenValue(WrittenRow row) : content(std::move(row)) {}
};

/// A value in TOML, on one line.
[[nodiscard]] std::string tomlText(const WrittenValue& value);

/// Two-digit hexadecimal numbers, with blanks between them.
[[nodiscard]] std::string hexText(std::span<const std::uint8_t> bytes);

/// A table: its keys with values, then the tables in it.
class DocumentTable {
public:
    void set(std::string_view key, WrittenValue value);
    void set(const WrittenRow& row);

    /// Sets a key to an array of rows, one in each line.
    void setRows(std::string_view key, std::vector<WrittenRow> rows);

    /// The table under a key. It is made when it is not there.
    DocumentTable& table(std::string_view key);

    /// A new table at the end of the array of tables under a key.
    DocumentTable& append(std::string_view key);

    /// A line of comment in front of the table's header.
    void comment(std::string_view line) { comments_.emplace_back(line); }

    /// The table and all tables in it, in TOML.
    [[nodiscard]] std::string toml() const;

private:
    struct Inner {
        std::string key;
        bool isElement = false; ///< of an array of tables
        std::unique_ptr<DocumentTable> table;
    };
    using Rows = std::vector<WrittenRow>;

    void write(std::string& text, const std::string& path, bool inElement) const;

    std::vector<std::string> comments_;
    std::vector<std::pair<std::string, std::variant<WrittenValue, Rows>>> keys_;
    std::vector<Inner> tables_;
};

} // namespace board
