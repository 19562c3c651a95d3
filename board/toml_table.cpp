#include "board/toml_table.h"

#include "board/byte_text.h"
#include "board/message_text.h"

#include <algorithm>
#include <limits>

namespace board {

namespace {

std::string rangeText(std::int64_t lowest, std::int64_t highest) {
    return std::to_string(lowest) + " to " + std::to_string(highest);
}

} // namespace

std::string Place::seenFrom(const Place& other) const {
    return (file == other.file ? "line " : file + ":") + std::to_string(line);
}

void Place::refuse(std::string_view reason) const {
    std::string where = file;
    if (line != 0) {
        where.append(":").append(std::to_string(line));
    }
    throw BoardError(printable(where.append(": ").append(reason)));
}

void attempt(Errors* errors, const std::function<void()>& read) {
    constexpr std::size_t most = 100;
    try {
        read();
    } catch (const BoardError& error) {
        if (errors == nullptr) {
            throw;
        }
        if (errors->size() < most) {
            errors->emplace_back(error.what());
        }
    }
}

Place placeOf(const toml::source_region& source, const std::string& file) {
    return {source.path ? *source.path : file, source.begin.line};
}

TomlTable::TomlTable(const toml::table& table, std::string what, const Reading& reading)
    : table_(&table), what_(std::move(what)), reading_(&reading) {}

void TomlTable::attempt(const std::function<void()>& read) const {
    board::attempt(reading_->errors, read);
}

const toml::node* TomlTable::find(std::string_view key, std::string_view kind, std::int64_t lowest,
                                  std::int64_t highest) {
    if (reading_->observer != nullptr) {
        reading_->observer->asked(pathTo(key), kind, lowest, highest);
    }
    known_.emplace(key);
    return table_->get(key);
}

std::string TomlTable::pathTo(std::string_view key) const {
    std::string path = path_;
    return path.append(path.empty() ? "" : ".").append(hasNames_ ? "*" : key);
}

TomlTable TomlTable::inner(const toml::table& table, std::string_view key) const {
    TomlTable inner(table, std::string(key), *reading_);
    if (reading_->observer != nullptr) {
        inner.path_ = pathTo(key);
    }
    return inner;
}

Place TomlTable::placeOf(const toml::node& node) const {
    return board::placeOf(node.source(), reading_->files.back());
}

Place TomlTable::place() const {
    return placeOf(*table_);
}

Place TomlTable::place(std::string_view key) const {
    const auto found = table_->find(key);
    if (found == table_->end()) {
        return place();
    }
    const Place value = placeOf(found->second);
    // A register of a base has no place if the base lists it among others.
    return value.line != 0 ? value : board::placeOf(found->first.source(), reading_->files.back());
}

std::int64_t TomlTable::integerIn(const toml::node& node, std::string_view key, std::int64_t lowest,
                                  std::int64_t highest) const {
    const auto value = node.value_exact<std::int64_t>();
    if (!value || *value < lowest || *value > highest) {
        placeOf(node).refuse(what_ + ": " + inQuotes(key) + " must be a whole number from " +
                             rangeText(lowest, highest));
    }
    return *value;
}

std::optional<std::int64_t> TomlTable::integer(std::string_view key, std::int64_t lowest,
                                               std::int64_t highest) {
    const auto* node = find(key, "integer", lowest, highest);
    if (node == nullptr) {
        return std::nullopt;
    }
    return integerIn(*node, key, lowest, highest);
}

std::int64_t TomlTable::requiredInteger(std::string_view key, std::int64_t lowest,
                                        std::int64_t highest) {
    const auto value = integer(key, lowest, highest);
    if (!value) {
        place().refuse(what_ + ": " + inQuotes(key) + " is missing");
    }
    return *value;
}

std::optional<bool> TomlTable::boolean(std::string_view key) {
    const auto* node = find(key, "boolean");
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto value = node->value_exact<bool>();
    if (!value) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " must be true or false");
    }
    return value;
}

std::optional<std::string> TomlTable::text(std::string_view key, std::size_t longest) {
    const auto* node = find(key, "text");
    if (node == nullptr) {
        return std::nullopt;
    }
    auto value = node->value_exact<std::string>();
    if (!value) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " must be a text");
    }
    if (longest == std::string::npos) {
        refuseNul(*value, key, placeOf(*node));
    }
    if (value->size() > longest) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " has more than " +
                              std::to_string(longest) + " characters");
    }
    return value;
}

std::optional<Bytes> TomlTable::bytes(std::string_view key) {
    const auto* node = find(key, "bytes");
    if (node == nullptr) {
        return std::nullopt;
    }
    constexpr auto highest = std::numeric_limits<std::uint8_t>::max();
    Bytes bytes;
    if (const auto* array = node->as_array()) {
        for (const auto& element : *array) {
            bytes.push_back(static_cast<std::uint8_t>(integerIn(element, key, 0, highest)));
        }
    } else if (const auto text = node->value_exact<std::string_view>()) {
        if (const auto wrong = appendBytes(*text, bytes)) {
            placeOf(*node).refuse(what_ + ": " + inQuotes(key) + ": " + inQuotes(*wrong) +
                                  " is not a byte of two hexadecimal digits");
        }
    } else {
        bytes.push_back(static_cast<std::uint8_t>(integerIn(*node, key, 0, highest)));
    }
    return bytes;
}

void TomlTable::eachText(std::string_view key,
                         const std::function<void(const std::string&, const Place&)>& use) {
    const auto* node = find(key, "texts");
    if (node == nullptr) {
        return;
    }
    const auto* array = node->as_array();
    if (array == nullptr) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " must be an array of texts");
    }
    for (const auto& element : *array) {
        const auto text = element.value_exact<std::string>();
        if (!text) {
            placeOf(element).refuse(what_ + ": " + inQuotes(key) + " must be an array of texts");
        }
        refuseNul(*text, key, placeOf(element));
        attempt([&] { use(*text, placeOf(element)); });
    }
}

void TomlTable::eachTable(std::string_view key, const std::function<void(TomlTable&)>& use) {
    const auto* node = find(key, "tables");
    if (node == nullptr) {
        return;
    }
    const auto* array = node->as_array();
    if (array == nullptr || !array->is_array_of_tables()) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " must be an array of tables, [[" +
                              std::string(key) + "]]");
    }
    for (const auto& element : *array) {
        attempt([&] {
            TomlTable table = inner(*element.as_table(), key);
            use(table);
            table.finish();
        });
    }
}

std::optional<TomlTable> TomlTable::table(std::string_view key) {
    const auto* node = find(key, "table");
    if (node == nullptr) {
        return std::nullopt;
    }
    if (node->as_table() == nullptr) {
        placeOf(*node).refuse(what_ + ": " + inQuotes(key) + " must be a table, [" +
                              std::string(key) + "]");
    }
    return inner(*node->as_table(), key);
}

std::vector<std::string> TomlTable::names() {
    hasNames_ = true;
    if (reading_->observer != nullptr) {
        reading_->observer->asked(path_, "names", 0, 0);
    }
    struct Placed {
        std::size_t rank; ///< of the file
        const toml::key* key;
    };
    std::vector<Placed> keys;
    for (const auto& [key, value] : *table_) {
        keys.push_back({rankOf(key.source()), &key});
    }
    std::ranges::sort(keys, [](const Placed& one, const Placed& other) {
        return one.rank != other.rank ? one.rank < other.rank
                                      : one.key->source().begin < other.key->source().begin;
    });
    std::vector<std::string> names;
    for (const auto& [rank, key] : keys) {
        refuseNul(key->str(), key->str(), board::placeOf(key->source(), reading_->files.back()));
        names.emplace_back(key->str());
        known_.insert(names.back());
    }
    return names;
}

// The number of a node's file among the files: a higher one for the description than for its bases.
std::size_t TomlTable::rankOf(const toml::source_region& source) const {
    const auto& files = reading_->files;
    const auto found =
        source.path ? std::ranges::find(files, *source.path) : std::prev(files.end());
    return static_cast<std::size_t>(found - files.begin());
}

void TomlTable::onlyWhere(std::string_view key, std::string_view condition, std::string_view kind) {
    const auto* node = table_->get(key);
    if (node == nullptr || known_.contains(key)) {
        return;
    }
    const auto* decider = table_->get(kind);
    if (decider != nullptr && rankOf(node->source()) < rankOf(decider->source())) {
        known_.emplace(key);
        return;
    }
    place(key).refuse((what_ + ": " + inQuotes(key) + " is a key only where ").append(condition));
}

// The hardware's libraries, the bus and the kernel take texts that end with a NUL character.
void TomlTable::refuseNul(std::string_view text, std::string_view key, const Place& place) const {
    if (text.find('\0') != std::string_view::npos) {
        place.refuse(what_ + ": " + inQuotes(key) + " has a NUL character");
    }
}

void TomlTable::finish() const {
    for (const auto& [key, value] : *table_) {
        if (!known_.contains(key.str())) {
            attempt([&, &key = key] { refuseUnknown(key); });
        }
    }
}

void TomlTable::refuseUnknown(const toml::key& key) const {
    const std::vector<std::string> known(known_.begin(), known_.end());
    board::placeOf(key.source(), reading_->files.back())
        .refuse(what_ + ": " + inQuotes(key.str()) + " is not a key here" +
                suggestion(key.str(), known));
}

} // namespace board
