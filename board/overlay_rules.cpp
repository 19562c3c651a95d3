#include "board/overlay_rules.h"

#include "board/message_text.h"

#include <algorithm>
#include <utility>

namespace board {

Place placeIn(const toml::node& node) {
    return placeOf(node.source(), {});
}

std::vector<std::string> keysOf(const toml::table& table) {
    std::vector<std::string> keys;
    keys.reserve(table.size());
    for (const auto& [key, value] : table) {
        keys.emplace_back(key.str());
    }
    return keys;
}

bool isRemoval(const toml::node& node) {
    const auto* table = node.as_table();
    const auto* remove = table != nullptr ? table->get(removeKey) : nullptr;
    return remove != nullptr && remove->value_exact<bool>() == true;
}

void moveRest(toml::table& over, toml::table& base) {
    for (auto&& [key, value] : base) {
        if (!over.contains(key.str())) {
            over.insert(key, std::move(value));
        }
    }
}

void appendAll(toml::array& to, toml::array& from) {
    for (auto& element : from) {
        to.push_back(std::move(element));
    }
    from.clear();
}

void OverlayRules::requireBase(const Place& place, std::string_view what,
                               std::string_view name) const {
    if (!hasBase) {
        place.refuse(std::string(what).append(": ").append(inQuotes(name)) +
                     " is a key only where 'base' is given");
    }
}

void OverlayRules::checkRemoval(const toml::table& removal, std::string_view what,
                                std::span<const IdentityKey> identity) const {
    requireBase(placeIn(*removal.get(removeKey)), what, removeKey);
    for (const auto& [name, value] : removal) {
        const std::string_view text = name.str();
        const bool finds = std::ranges::find(identity, text, &IdentityKey::key) != identity.end();
        if (text != removeKey && !finds) {
            placeIn(value).refuse(std::string(what).append(": ").append(inQuotes(text)) +
                                  " cannot stand beside 'remove = true'");
        }
    }
}

void OverlayRules::takeOut(toml::table& over, const std::string& name, toml::table& base,
                           const std::string& baseName, std::string_view what) const {
    const toml::table removal = std::move(*over.get(name)->as_table());
    over.erase(name);
    checkRemoval(removal, shortened(name));
    if (baseName.empty()) {
        refuseMissing(placeIn(removal), what, name, base);
    }
    base.erase(baseName);
}

void OverlayRules::refuseMissing(const Place& place, std::string_view what, std::string_view name,
                                 const toml::table& base) {
    place.refuse(std::string(what).append(": the base has no ").append(inQuotes(name)) + " here" +
                 suggestion(name, keysOf(base)));
}

} // namespace board
