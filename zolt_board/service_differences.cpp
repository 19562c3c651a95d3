#include "zolt_board/service_differences.h"

#include "zolt_board/change_list.h"
#include "zolt_board/rule_differences.h"

#include "board/bus_names.h"
#include "board/cpld_contents.h"
#include "board/module_type.h"
#include "board/published_board.h"
#include "board/value_writer.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

using board::Property;
using Fate = SlotFates::Fate;

using Properties = std::map<std::string, const Property*>;
using InterfaceKey = std::pair<std::string, std::string>; // path and interface

// An interface of an object, and the slot whose module it shows.
struct Published {
    Properties shown{};
    Properties derived{}; // from the module's payload alone
    unsigned slot = 0;    // 0: the object is of no module
};

// What a service publishes, and what it would publish of the modules without further description.
class Service {
public:
    explicit Service(const board::Board& board)
        : shown_(board::publishBoard(board)), derived_(board::publishBoard(modulesOf(board))) {
        for (const board::PublishedInterface& published : shown_.interfaces) {
            add(published.properties, interfaces_[{published.path, published.interface}].shown);
        }
        for (const board::PublishedInterface& published : derived_.interfaces) {
            const auto found = interfaces_.find({published.path, published.interface});
            const unsigned slot = slotOf(board, published.path);
            if (found != interfaces_.end() && slot != 0) {
                add(published.properties, found->second.derived);
                found->second.slot = slot;
            }
        }
    }
    Service(const Service&) = delete; // the properties stay in place
    Service& operator=(const Service&) = delete;
    ~Service() = default;

    [[nodiscard]] const std::map<InterfaceKey, Published>& interfaces() const {
        return interfaces_;
    }

private:
    static board::Board modulesOf(const board::Board& board) {
        board::Board modules;
        modules.slots = board.slots;
        return modules;
    }

    static unsigned slotOf(const board::Board& board, const std::string& path) {
        const auto slot = std::ranges::find_if(board.slots, [&](const board::Slot& candidate) {
            return !candidate.moduleType.empty() &&
                   board::shortPath(path) ==
                       std::string(candidate.moduleType).append("/").append(candidate.objectName);
        });
        return slot == board.slots.end() ? 0 : slot->id;
    }

    static void add(const std::vector<Property>& properties, Properties& byName) {
        for (const Property& property : properties) {
            byName[property.name] = &property;
        }
    }

    board::ServiceModel shown_;
    board::ServiceModel derived_;
    std::map<InterfaceKey, Published> interfaces_{};
};

const Property* propertyIn(const Properties& properties, const std::string& name) {
    const auto found = properties.find(name);
    return found == properties.end() ? nullptr : found->second;
}

Shown valueOf(const Property* property) {
    return property == nullptr ? Shown() : Shown(board::written(*property));
}

bool isEqual(const Property* one, const Property* other) {
    return one == other || (one != nullptr && other != nullptr && *one == *other);
}

std::string nameOf(const InterfaceKey& key) {
    return std::string(board::shortPath(key.first))
        .append(" (")
        .append(board::shortInterface(key.second))
        .append(")");
}

class ServiceComparison {
public:
    ServiceComparison(const SlotFates& fates, std::vector<Change>& changes)
        : fates_(fates), changes_(changes, "service") {}

    void compare(const InterfaceKey& key, const Published* before, const Published* after) {
        if (before == nullptr) {
            if (fates_.after.at(after->slot).fate != Fate::comes) {
                changes_.added(nameOf(key));
            }
        } else if (after == nullptr) {
            if (fates_.before.at(before->slot).fate != Fate::goes) {
                changes_.removed(nameOf(key));
            }
        } else {
            compareProperties(key, *before, *after);
        }
    }

private:
    // Whether the module behind the interface is the same on both boards, and has a payload whose
    // change is reported.
    [[nodiscard]] bool showsReportedPayload(const Published& before, const Published& after) const {
        if (before.slot == 0 || after.slot == 0) {
            return false;
        }
        const SlotFates::Slot& was = fates_.before.at(before.slot);
        const unsigned now = was.fate == Fate::moves ? was.other : before.slot;
        return now == after.slot && was.isPayloadReported;
    }

    void compareProperties(const InterfaceKey& key, const Published& before,
                           const Published& after) {
        const bool followsPayload = showsReportedPayload(before, after);
        std::set<std::string> names;
        for (const Published* const published : {&before, &after}) {
            for (const auto& [name, property] : published->shown) {
                names.insert(name);
            }
        }
        ChangeList object = changes_.at(nameOf(key));
        for (const std::string& name : names) {
            const Property* const first = propertyIn(before.shown, name);
            const Property* const second = propertyIn(after.shown, name);
            const bool isDerived = isEqual(first, propertyIn(before.derived, name)) &&
                                   isEqual(second, propertyIn(after.derived, name));
            if (!followsPayload || !isDerived) {
                object.value(name, valueOf(first), valueOf(second));
            }
        }
    }

    const SlotFates& fates_;
    ChangeList changes_;
};

std::string orderText(const board::ServiceOrder& order) {
    using Action = board::ServiceOrder::Action;
    constexpr std::array<const char*, 4> actions{"answer", "error", "reply", "leave"};
    const auto word = [](const char* name, const std::string& value) {
        return value.empty() ? std::string() : std::string(name).append(value);
    };
    const auto number = [](const char* name, long long value) {
        return value == 0 ? std::string() : std::string(name).append(std::to_string(value));
    };
    std::string text = std::string(actions.at(static_cast<std::size_t>(order.action)));
    if (order.action == Action::error) {
        text.append(word(" ", order.name));
        text.append(" ").append(board::tomlText(order.text));
    } else if (order.action == Action::reply && !order.signature.empty()) {
        const Property reply{"", order.signature, order.value};
        text.append(" ").append(board::tomlText(board::written(reply)));
    }
    return text.append(word(" for path ", order.path))
        .append(word(" and interface ", order.interface))
        .append(number(" after ", order.after))
        .append(number(" delay_ms ", order.delay.count()));
}

void compareOrders(const board::ServiceDescription& before, const board::ServiceDescription& after,
                   std::vector<Change>& changes) {
    const auto textsOf = [](const board::ServiceDescription& service) {
        std::vector<std::string> texts;
        texts.reserve(service.orders.size());
        std::ranges::transform(service.orders, std::back_inserter(texts), orderText);
        return texts;
    };
    compareRules(textsOf(before), textsOf(after), ChangeList(changes, "orders"));
}

} // namespace

void compareServices(const BoardView& before, const BoardView& after, const SlotFates& fates,
                     std::vector<Change>& changes) {
    const Service first(before.board());
    const Service second(after.board());
    std::set<InterfaceKey> keys;
    for (const Service* const service : {&first, &second}) {
        for (const auto& [key, published] : service->interfaces()) {
            keys.insert(key);
        }
    }
    ServiceComparison comparison(fates, changes);
    for (const InterfaceKey& key : keys) {
        const auto in = [&](const Service& service) {
            const auto found = service.interfaces().find(key);
            return found == service.interfaces().end() ? nullptr : &found->second;
        };
        comparison.compare(key, in(first), in(second));
    }
    compareOrders(before.board().service, after.board().service, changes);
}

} // namespace zolt_board
