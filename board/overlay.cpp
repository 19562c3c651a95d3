#include "board/overlay.h"

#include "board/description_layout.h"
#include "board/message_text.h"
#include "board/overlay_list.h"
#include "board/overlay_names.h"
#include "board/overlay_rules.h"

#include <algorithm>
#include <utility>

namespace board {

namespace {

bool isOneOf(std::span<const std::string_view> names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

// Drops the keys of the base that cannot stand beside the given ones.
void dropOtherSide(const toml::table& over, toml::table& base, const Alternatives& sides) {
    const auto isSome = [&](std::string_view name) { return isOneOf(sides.some, name); };
    const auto isOther = [&](std::string_view name) {
        return sides.others.empty() ? !isSome(name) : isOneOf(sides.others, name);
    };
    const std::vector<std::string> given = keysOf(over);
    const bool givesSome = std::ranges::any_of(given, isSome);
    const bool givesOther = std::ranges::any_of(given, isOther);
    for (const std::string& name : keysOf(base)) {
        if ((givesSome && isOther(name)) || (givesOther && isSome(name))) {
            base.erase(name);
        }
    }
}

[[noreturn]] void refuseRemove(const Place& place, const Layout& layout) {
    place.refuse(std::string(layout.key) + ": 'remove' must be true or an array of keys");
}

class Overlay {
public:
    explicit Overlay(const OverlayRules& rules) : rules_(rules) {}

    void layTable(toml::table& over, toml::table& base, const Layout& layout) {
        attempt(rules_.errors, [&] { takeOutKeys(over, base, layout); });
        for (const Alternatives& sides : layout.alternatives) {
            dropOtherSide(over, base, sides);
        }
        for (const std::string& name : keysOf(over)) {
            attempt(rules_.errors, [&] { layKey(over, base, name, layout); });
        }
        moveRest(over, base);
    }

private:
    // remove = ["key", ...]: these keys of the base do not count.
    void takeOutKeys(toml::table& over, toml::table& base, const Layout& layout) const {
        if (!over.contains(removeKey)) {
            return;
        }
        toml::array held; // the key goes, even if it has an error
        held.push_back(std::move(*over.get(removeKey)));
        over.erase(removeKey);
        const toml::node& remove = *held.get(0);
        rules_.requireBase(placeIn(remove), layout.key, removeKey);
        if (!remove.is_array()) {
            refuseRemove(placeIn(remove), layout);
        }
        for (const auto& element : *remove.as_array()) {
            const auto name = element.value_exact<std::string>();
            if (!name) {
                refuseRemove(placeIn(element), layout);
            }
            if (!base.contains(*name)) {
                OverlayRules::refuseMissing(placeIn(element), layout.key, *name, base);
            }
            base.erase(*name);
        }
    }

    void layKey(toml::table& over, toml::table& base, const std::string& name,
                const Layout& layout) {
        const Layout* const member = memberOf(layout, name);
        const bool hasNames = member != nullptr && member->hasNames();
        if (!hasNames && isRemoval(*over.get(name))) {
            rules_.takeOut(over, name, base, base.contains(name) ? name : "", layout.key);
            return;
        }
        if (member == nullptr) {
            return; // the value replaces that of the base
        }
        layMember(*over.get(name), base.get(name), *member);
        const auto* const rest = over.get(name)->as_array();
        if (rest != nullptr && rest->empty() && base.contains(name)) {
            base.erase(name); // all elements are taken out: there is no empty array of tables
            over.erase(name);
        }
    }

    void layMember(toml::node& mine, toml::node* theirs, const Layout& member) {
        toml::table noTable;
        toml::array noArray;
        if (auto* const table = mine.as_table()) {
            auto* const base = theirs != nullptr ? theirs->as_table() : nullptr;
            layTableOfKind(*table, base != nullptr ? *base : noTable, member);
        } else if (auto* const array = mine.as_array()) {
            auto* const base = theirs != nullptr ? theirs->as_array() : nullptr;
            layArray(*array, base != nullptr ? *base : noArray, member);
        }
    }

    void layTableOfKind(toml::table& over, toml::table& base, const Layout& layout) {
        if (layout.hasNames()) {
            layNamesOver(over, base, layout, rules_);
        } else if (layout.kind == Layout::Kind::table) {
            layTable(over, base, layout);
        } // else the loader refuses the table: it must be an array
    }

    void layArray(toml::array& over, toml::array& base, const Layout& layout) {
        if (layout.kind == Layout::Kind::texts) {
            toml::array held;
            appendAll(held, over);
            appendAll(over, base);
            appendAll(over, held);
        } else if (layout.kind == Layout::Kind::list && over.is_array_of_tables()) {
            layListOver(over, base, layout, rules_, [&](toml::table& mine, toml::table& theirs) {
                layTable(mine, theirs, layout);
            });
        } // else the loader refuses the array
    }

    OverlayRules rules_;
};

} // namespace

void layOver(toml::table& over, toml::table base, Errors* errors) {
    Overlay({.hasBase = true, .errors = errors}).layTable(over, base, boardLayout());
}

void refuseChanges(toml::table& description, Errors* errors) {
    toml::table none;
    Overlay({.hasBase = false, .errors = errors}).layTable(description, none, boardLayout());
}

} // namespace board
