#include "zolt_board/change_list.h"

#include "zolt_board/joined.h"

#include "board/field_writer.h"

#include <algorithm>
#include <utility>

namespace zolt_board {

namespace {

// The bytes that one of the boards has in a range.
Shown part(std::span<const std::uint8_t> bytes, std::size_t first, std::size_t end) {
    if (first >= bytes.size()) {
        return std::nullopt;
    }
    board::Bytes inRange;
    inRange.reserve(end - first);
    for (std::size_t at = first; at < std::min(end, bytes.size()); ++at) {
        inRange.push_back(bytes[at]);
    }
    return Shown(std::move(inRange));
}

} // namespace

ChangeList ChangeList::at(std::string part) const {
    ChangeList list(*changes_, place_, movedFrom_);
    list.part_ = std::move(part);
    return list;
}

Change& ChangeList::add(Change::Kind kind, std::string what) {
    changes_->push_back({.kind = kind,
                         .place = place_,
                         .part = part_,
                         .movedFrom = movedFrom_,
                         .what = std::move(what)});
    return changes_->back();
}

void ChangeList::added(std::string what) {
    add(Change::Kind::added, std::move(what));
}

void ChangeList::removed(std::string what) {
    add(Change::Kind::removed, std::move(what));
}

void ChangeList::moved(std::string what) {
    add(Change::Kind::moved, std::move(what));
}

void ChangeList::reordered(std::string what) {
    add(Change::Kind::reordered, std::move(what));
}

void ChangeList::value(std::string what, Shown before, Shown after, const char* nothing) {
    if (!isSame(before, after)) {
        Change& change = add(Change::Kind::changed, std::move(what));
        change.before = std::move(before);
        change.after = std::move(after);
        change.nothing = nothing;
    }
}

void ChangeList::valueIn(Change::View view, std::string what, Shown before, Shown after) {
    const std::size_t old = changes_->size();
    value(std::move(what), std::move(before), std::move(after));
    if (changes_->size() != old) {
        changes_->back().view = view;
    }
}

void ChangeList::fields(std::span<const board::BitField> fields,
                        std::span<const std::uint8_t> before, std::span<const std::uint8_t> after) {
    for (const board::BitField& field : fields) {
        value(std::string(field.key), shownField(field, field.decode(before)),
              shownField(field, field.decode(after)));
    }
}

void ChangeList::bytes(const std::string& what, std::span<const std::uint8_t> before,
                       std::span<const std::uint8_t> after, std::uint32_t first,
                       unsigned hexDigits) {
    const std::size_t common = std::min(before.size(), after.size());
    const std::size_t all = std::max(before.size(), after.size());
    const auto isEqual = [&](std::size_t at) { return at < common && before[at] == after[at]; };
    for (std::size_t at = 0; at < all; ++at) {
        if (isEqual(at)) {
            continue;
        }
        // Bytes that both boards have, or bytes that only one of them has.
        const std::size_t most = at < common ? common : all;
        std::size_t end = at + 1;
        while (end < most && !isEqual(end)) {
            ++end;
        }
        std::string name = std::string(what).append(end - at == 1 ? " " : "s ");
        name.append(inHex(static_cast<std::uint32_t>(first + at), hexDigits));
        if (end - at > 1) {
            name.append("-").append(inHex(static_cast<std::uint32_t>(first + end - 1), hexDigits));
        }
        value(std::move(name), part(before, at, end), part(after, at, end));
        at = end - 1;
    }
}

board::WrittenValue shownField(const board::BitField& field, std::uint32_t value) {
    if (field.highest() == 1) {
        return value != 0;
    }
    return board::fieldNumber(field.key, value, field.highest());
}

Shown shownByte(std::string_view key, std::optional<std::uint8_t> stated) {
    return stated ? Shown(board::fieldNumber(key, *stated)) : std::nullopt;
}

} // namespace zolt_board
