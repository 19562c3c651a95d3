#include "zolt_board/change.h"

#include "board/message_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace zolt_board {

namespace {

constexpr std::size_t mostShownBytes = 16; ///< of a value that are shown

std::string textOf(const board::Bytes& bytes) {
    if (bytes.empty()) {
        return "no bytes";
    }
    if (bytes.size() == 1) {
        return std::string("0x").append(board::hexText(bytes));
    }
    const auto shown = std::span(bytes).first(std::min(bytes.size(), mostShownBytes));
    std::string text = board::hexText(shown);
    return bytes.size() == shown.size()
               ? text
               : text.append("... (").append(std::to_string(bytes.size())).append(" bytes)");
}

std::string textOf(const Shown& value, const std::string& nothing) {
    if (!value) {
        return nothing;
    }
    const auto* const bytes = std::get_if<board::Bytes>(&value->content);
    return bytes != nullptr ? textOf(*bytes) : board::shortened(board::tomlText(*value));
}

// The words for what happened to a thing as a whole.
std::string event(const Change& change) {
    switch (change.kind) {
    case Change::Kind::added:
        // The driver and the service create what they have.
        return change.place.starts_with("/dev/") || change.place == "service" ? " created"
                                                                              : " added";
    case Change::Kind::removed:
        return " removed";
    case Change::Kind::reordered:
        return " in another order";
    case Change::Kind::moved:
        return std::string(" moved to ").append(change.place);
    case Change::Kind::changed:
        break;
    }
    return {};
}

std::string sentence(const Change& change) {
    const std::string what = board::shortened(change.what);
    if (change.kind != Change::Kind::changed) {
        return std::string(what).append(event(change));
    }
    constexpr std::array<const char*, 3> views{"", " (named read)", " (raw register)"};
    const auto isBytes = [](const Shown& value) {
        return value && std::holds_alternative<board::Bytes>(value->content);
    };
    const char* const end = isBytes(change.before) || isBytes(change.after) ? ": " : " ";
    return std::string(what)
        .append(views.at(static_cast<std::size_t>(change.view)))
        .append(what.empty() ? "" : end)
        .append(textOf(change.before, change.nothing))
        .append(" -> ")
        .append(textOf(change.after, change.nothing));
}

} // namespace

std::string textOf(const Change& change) {
    const bool isMove = change.kind == Change::Kind::moved;
    std::string text = board::shortened(isMove ? change.movedFrom : change.place);
    if (!change.part.empty()) {
        text.append(", ").append(board::shortened(change.part));
    }
    return board::printable(text.append(": ").append(sentence(change)));
}

bool isSame(const Shown& before, const Shown& after) {
    if (!before || !after) {
        return before.has_value() == after.has_value();
    }
    return board::tomlText(*before) == board::tomlText(*after);
}

} // namespace zolt_board
