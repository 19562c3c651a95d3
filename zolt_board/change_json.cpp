#include "zolt_board/change_json.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace zolt_board {

namespace {

// A text is an object, so that nobody takes it for bytes.
Json toJson(const board::WrittenValue& value) {
    struct Writer {
        Json operator()(bool truth) const { return truth; }
        Json operator()(board::WrittenNumber number) const { return number.value; }
        Json operator()(double number) const { return numberToJson(number); }
        Json operator()(const std::string& text) const { return textToJson(text); }
        Json operator()(const board::Bytes& bytes) const { return bytesToJson(bytes); }
        Json operator()(const board::WrittenList& list) const {
            Json json = Json::array();
            for (const board::WrittenValue& element : list) {
                json.push_back(toJson(element));
            }
            return json;
        }
        Json operator()(const board::WrittenRow& row) const {
            Json json = Json::object();
            for (const auto& [key, element] : row) {
                json[key] = toJson(element);
            }
            return json;
        }
    };
    return std::visit(Writer{}, value.content);
}

Json toJson(const Shown& value) {
    return value ? toJson(*value) : Json(nullptr);
}

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json toJson(const Change& change) {
    constexpr std::array<const char*, 5> kinds{"changed", "added", "removed", "reordered", "moved"};
    constexpr std::array<const char*, 3> views{"all", "named", "raw"};
    Json json = {
        {"kind", kinds.at(static_cast<std::size_t>(change.kind))},
        {"place", change.place},
        {"part", textOrNull(change.part)},
        {"moved_from", textOrNull(change.movedFrom)},
        {"what", change.what},
    };
    if (change.kind == Change::Kind::changed) {
        json["view"] = views.at(static_cast<std::size_t>(change.view));
        json["before"] = toJson(change.before);
        json["after"] = toJson(change.after);
    }
    return json;
}

} // namespace

Json diffReport(const std::string& before, const std::string& after,
                const std::vector<Change>& changes) {
    Json json = reportOf("diff");
    json["before"] = before;
    json["after"] = after;
    Json list = Json::array();
    for (const Change& change : changes) {
        list.push_back(toJson(change));
    }
    json["changes"] = std::move(list);
    return json;
}

} // namespace zolt_board
