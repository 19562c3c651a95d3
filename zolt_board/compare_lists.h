// Compares two lists of like things: end points, descriptors, sub nodes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <map>
#include <set>
#include <vector>

namespace zolt_board {

/// Leaves out the things that both lists have at their start and at their end. Of the others, those
/// at the same position are pairs, and the rest of the longer list was added or removed.
/// @param pair     called with the index and both things
/// @param removed  called with the index in the first list
/// @param added    called with the index in the second list
template <typename List, typename Pair, typename Removed, typename Added>
void compareLists(const List& before, const List& after, Pair pair, Removed removed, Added added) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t start = 0;
    while (start < shorter && before[start] == after[start]) {
        ++start;
    }
    std::size_t end = 0; // counted from the lists' ends
    while (end < shorter - start &&
           before[before.size() - 1 - end] == after[after.size() - 1 - end]) {
        ++end;
    }
    for (std::size_t i = start; i < std::max(before.size(), after.size()) - end; ++i) {
        if (i >= after.size() - end) {
            removed(i);
        } else if (i >= before.size() - end) {
            added(i);
        } else {
            pair(i, before[i], after[i]);
        }
    }
}

/// Pairs of things with the same key. Things that share a key are paired in their order.
template <typename Thing, typename Key>
struct Pairs {
    struct Pair {
        const Thing* before;
        const Thing* after;
    };
    std::vector<Pair> both;
    std::vector<const Thing*> removed;
    std::vector<const Thing*> added;
    bool isOtherOrder = false; ///< the things of both boards come in another order

    Pairs(const std::vector<Thing>& before, const std::vector<Thing>& after, Key keyOf) {
        std::map<decltype(keyOf(before.front())), std::deque<const Thing*>> rest;
        for (const Thing& thing : after) {
            rest[keyOf(thing)].push_back(&thing);
        }
        const Thing* last = nullptr;
        std::set<const Thing*> taken;
        for (const Thing& thing : before) {
            auto& same = rest[keyOf(thing)];
            if (same.empty()) {
                removed.push_back(&thing);
                continue;
            }
            both.push_back({&thing, same.front()});
            isOtherOrder = isOtherOrder || (last != nullptr && same.front() < last);
            last = same.front();
            taken.insert(last);
            same.pop_front();
        }
        for (const Thing& thing : after) {
            if (!taken.contains(&thing)) {
                added.push_back(&thing);
            }
        }
    }
};

} // namespace zolt_board
