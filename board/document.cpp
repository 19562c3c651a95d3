#include "board/document.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace board {

namespace {

constexpr std::size_t bytesInLine = 16;
constexpr std::string_view hexDigits = "0123456789ABCDEF";

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases> // not every compiler deduces the types of an aggregate
Overloaded(Cases...)->Overloaded<Cases...>;

std::string inHex(std::uint64_t value, unsigned digits) {
    std::string text;
    do {
        text.insert(text.begin(), hexDigits[value % 16]);
        value /= 16;
    } while (value != 0);
    text.insert(0, digits > text.size() ? digits - text.size() : 0, '0');
    return text;
}

std::string textOf(WrittenNumber number) {
    return number.hexDigits == 0 || number.value < 0
               ? std::to_string(number.value)
               : std::string("0x").append(
                     inHex(static_cast<std::uint64_t>(number.value), number.hexDigits));
}

// The shortest text that gives the same number again.
std::string textOf(double number) {
    if (std::isnan(number)) {
        return std::signbit(number) ? "-nan" : "nan";
    }
    if (std::isinf(number)) {
        return number < 0 ? "-inf" : "inf";
    }
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    std::string text(digits.data(), end);
    return text.find_first_of(".e") == std::string::npos ? text.append(".0") : text;
}

std::string quoted(std::string_view text) {
    std::string escaped = "\"";
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (letter == '"' || letter == '\\') {
            escaped.append(1, '\\').append(1, letter);
        } else if (code < 0x20 || code == 0x7F) {
            escaped.append("\\u").append(inHex(code, 4));
        } else {
            escaped.append(1, letter);
        }
    }
    return escaped.append(1, '"');
}

std::string textOf(const Bytes& bytes) {
    if (bytes.empty()) {
        return "[]"; // a text without numbers would do, too, and look like a mistake
    }
    if (bytes.size() <= bytesInLine) {
        return std::string("\"").append(hexText(bytes)).append("\"");
    }
    std::string text = "\"\"\"";
    for (std::size_t at = 0; at < bytes.size(); at += bytesInLine) {
        const auto line = std::span(bytes).subspan(at, std::min(bytesInLine, bytes.size() - at));
        text.append("\n    ").append(hexText(line));
    }
    return text.append("\"\"\"");
}

std::string keyText(std::string_view key) {
    constexpr std::string_view bare =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
    return !key.empty() && key.find_first_not_of(bare) == std::string_view::npos ? std::string(key)
                                                                                 : quoted(key);
}

std::string textOf(const WrittenValue& value);

std::string textOf(const WrittenList& list) {
    std::string text = "[";
    for (const WrittenValue& value : list) {
        text.append(text.size() > 1 ? ", " : "").append(textOf(value));
    }
    return text.append("]");
}

std::string textOf(const WrittenRow& row) {
    std::string text = "{";
    for (const auto& [key, value] : row) {
        text.append(text.size() > 1 ? ", " : " ").append(keyText(key)).append(" = ");
        text.append(textOf(value));
    }
    return text.append(row.empty() ? "}" : " }");
}

std::string textOf(const WrittenValue& value) {
    return std::visit(Overloaded{
                          [](bool truth) { return std::string(truth ? "true" : "false"); },
                          [](const std::string& text) { return quoted(text); },
                          [](const auto& other) { return textOf(other); },
                      },
                      value.content);
}

// A long list has a line for each of its values.
std::string atKey(const WrittenValue& value) {
    constexpr std::size_t longestLine = 80;
    std::string text = textOf(value);
    const auto* const list = std::get_if<WrittenList>(&value.content);
    if (list == nullptr || text.size() <= longestLine) {
        return text;
    }
    text = "[\n";
    for (const WrittenValue& element : *list) {
        text.append("    ").append(textOf(element)).append(",\n");
    }
    return text.append("]");
}

std::string atKey(const std::vector<WrittenRow>& rows) {
    if (rows.size() == 1) {
        return std::string("[").append(textOf(rows[0])).append("]");
    }
    std::string text = "[\n";
    for (const WrittenRow& row : rows) {
        text.append("    ").append(textOf(row)).append(",\n");
    }
    return text.append("]");
}

} // namespace

std::string hexText(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text.append(text.empty() ? "" : " ").append(inHex(byte, 2));
    }
    return text;
}

std::string tomlText(const WrittenValue& value) {
    return textOf(value);
}

void DocumentTable::set(std::string_view key, WrittenValue value) {
    keys_.emplace_back(key, std::move(value));
}

void DocumentTable::set(const WrittenRow& row) {
    for (const auto& [key, value] : row) {
        set(key, value);
    }
}

void DocumentTable::setRows(std::string_view key, std::vector<WrittenRow> rows) {
    keys_.emplace_back(key, std::move(rows));
}

DocumentTable& DocumentTable::table(std::string_view key) {
    const auto found = std::ranges::find(tables_, key, &Inner::key);
    if (found != tables_.end()) {
        return *found->table;
    }
    tables_.push_back({std::string(key), false, std::make_unique<DocumentTable>()});
    return *tables_.back().table;
}

DocumentTable& DocumentTable::append(std::string_view key) {
    tables_.push_back({std::string(key), true, std::make_unique<DocumentTable>()});
    return *tables_.back().table;
}

void DocumentTable::write(std::string& text, const std::string& path, bool inElement) const {
    for (const auto& [key, value] : keys_) {
        text.append(keyText(key)).append(" = ");
        text.append(std::visit([](const auto& written) { return atKey(written); }, value));
        text.append("\n");
    }
    for (const Inner& inner : tables_) {
        const std::string name = path.empty()
                                     ? keyText(inner.key)
                                     : std::string(path).append(".").append(keyText(inner.key));
        // A table that holds only tables needs no header.
        if (inner.isElement || !inner.table->keys_.empty()) {
            // The tables of an element follow it closely.
            text.append(text.empty() || inElement ? "" : "\n");
            for (const std::string& line : inner.table->comments_) {
                text.append("# ").append(line).append("\n");
            }
            text.append(inner.isElement ? "[[" : "[").append(name);
            text.append(inner.isElement ? "]]\n" : "]\n");
        }
        inner.table->write(text, name, inElement || inner.isElement);
    }
}

std::string DocumentTable::toml() const {
    std::string text;
    for (const std::string& line : comments_) {
        text.append(line.empty() ? "#" : "# ").append(line).append("\n");
    }
    text.append(comments_.empty() || keys_.empty() ? "" : "\n");
    write(text, "", false);
    return text;
}

} // namespace board
