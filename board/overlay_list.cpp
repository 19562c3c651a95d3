#include "board/overlay_list.h"

#include "board/message_text.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

namespace board {

namespace {

constexpr IdentityKey byPosition[] = {{positionKey, nullptr}};

class ListOverlay {
public:
    ListOverlay(toml::array& base, const Layout& layout, const OverlayRules& rules,
                const LayTable& lay)
        : base_(&base), layout_(&layout), rules_(&rules), lay_(&lay), changes_(base.size()) {
        for (std::size_t at = 0; at < base.size(); ++at) {
            if (const auto* table = base.get_as<toml::table>(at)) {
                const auto identity = hasPositions() ? std::to_string(at + 1) : identityOf(*table);
                if (identity) {
                    known_[*identity].push_back(at);
                }
            }
        }
    }

    void take(toml::array& over) {
        for (auto& element : over) {
            attempt(rules_->errors, [&] { takeTable(*element.as_table()); });
        }
    }

    // Puts the result into an empty array.
    void put(toml::array& result) {
        if (layout_->newestFirst) {
            appendAll(result, fresh_);
        }
        for (std::size_t at = 0; at < base_->size(); ++at) {
            if (!changes_[at].isRemoved) {
                result.push_back(std::move(*base_->get(at)));
            }
        }
        appendAll(result, fresh_);
    }

private:
    struct Change {
        std::optional<Place> place; ///< where the element is changed or taken out
        bool isRemoved = false;
    };

    [[nodiscard]] bool hasPositions() const { return layout_->identity.empty(); }

    [[nodiscard]] std::string message() const { return std::string(layout_->key) + ": "; }

    [[nodiscard]] std::optional<std::string> identityOf(const toml::table& table) const {
        std::string identity;
        for (const IdentityKey& part : layout_->identity) {
            const auto text = part.read(table.get(part.key));
            if (!text) {
                return std::nullopt;
            }
            identity.append(identity.empty() ? "" : " ").append(*text);
        }
        return identity;
    }

    // Takes the position out of a table: it is no key of the element.
    std::optional<std::string> positionIn(toml::table& table) const {
        const auto* const node = table.get(positionKey);
        if (node == nullptr) {
            return std::nullopt;
        }
        const Place place = placeIn(*node);
        const auto position = node->value_exact<std::int64_t>();
        table.erase(positionKey);
        rules_->requireBase(place, layout_->key, positionKey);
        if (!position) {
            place.refuse(message() + "'position' must be a whole number");
        }
        return std::to_string(*position);
    }

    void takeTable(toml::table& table) {
        const Place place = placeIn(table);
        const auto identity = hasPositions() ? positionIn(table) : identityOf(table);
        const auto found = identity ? known_.find(*identity) : known_.end();
        if (isRemoval(table)) {
            rules_->checkRemoval(table, layout_->key,
                                 hasPositions() ? byPosition : layout_->identity);
            requireFound(identity, found != known_.end(), place);
            Change& change = noteChange(found->second, *identity, place);
            change.isRemoved = true;
        } else if (found != known_.end()) {
            noteChange(found->second, *identity, place);
            auto& base = *base_->get_as<toml::table>(found->second.front());
            (*lay_)(table, base);
            base = std::move(table);
        } else {
            if (identity && hasPositions()) {
                requireFound(identity, false, place);
            }
            toml::table none;
            (*lay_)(table, none);
            fresh_.push_back(std::move(table));
        }
    }

    void requireFound(const std::optional<std::string>& identity, bool isFound,
                      const Place& place) const {
        if (!identity) {
            const auto name = hasPositions() ? positionKey : layout_->identity.front().key;
            place.refuse(message() + "a table with 'remove = true' needs " + inQuotes(name));
        }
        if (!isFound) {
            place.refuse((message() + "the base has no ")
                             .append(layout_->key)
                             .append(" ")
                             .append(shortened(*identity)));
        }
    }

    Change& noteChange(const std::vector<std::size_t>& found, const std::string& identity,
                       const Place& place) {
        if (found.size() > 1) {
            const Place first = placeIn(*base_->get(found[0]));
            const Place second = placeIn(*base_->get(found[1]));
            place.refuse(message() + shortened(identity) +
                         " stands more than once in the base, at " + first.seenFrom(place) +
                         " and " + second.seenFrom(place));
        }
        Change& change = changes_[found.front()];
        if (change.place) {
            place.refuse(message() + shortened(identity) + " is described already, at " +
                         change.place->seenFrom(place));
        }
        change.place = place;
        return change;
    }

    toml::array* base_;
    const Layout* layout_;
    const OverlayRules* rules_;
    const LayTable* lay_;
    std::unordered_map<std::string, std::vector<std::size_t>> known_; ///< of the base
    std::vector<Change> changes_;                                     ///< of the base's elements
    toml::array fresh_;                                               ///< new elements
};

} // namespace

void layListOver(toml::array& over, toml::array& base, const Layout& layout,
                 const OverlayRules& rules, const LayTable& lay) {
    ListOverlay list(base, layout, rules, lay);
    list.take(over);
    over.clear();
    list.put(over);
}

} // namespace board
