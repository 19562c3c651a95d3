#include "zolt_board/slot_differences.h"

#include "zolt_board/change_list.h"
#include "zolt_board/module_differences.h"
#include "zolt_board/register_differences.h"

#include "board/slot_registers.h"

#include <algorithm>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace zolt_board {

namespace {

using SlotBytes = std::span<const std::uint8_t>;
using Fate = SlotFates::Fate;

std::string placeOf(unsigned id) {
    return std::string("slot ").append(std::to_string(id));
}

RegisterView slotView(const BoardView& view, unsigned id, const board::ControlField& field) {
    const std::string name =
        field.suffix.empty()
            ? std::string()
            : std::string("PICPWR_").append(std::to_string(id)).append(field.suffix);
    return viewOf(view.cpld(), name, field.bits, view.block(id));
}

class SlotComparison {
public:
    SlotComparison(const BoardView& before, const BoardView& after, std::vector<Change>& changes)
        : before_(before), after_(after), changes_(changes) {}

    SlotFates compare() {
        for (unsigned id = 1; id <= board::slotCount; ++id) {
            findFate(id);
        }
        findMoves();
        for (unsigned id = 1; id <= board::slotCount; ++id) {
            report(id);
        }
        return fates_;
    }

private:
    // A slot's bytes on both boards, and whether a reader finds the same.
    struct Contents {
        SlotBytes payload[2];
        SlotBytes oemArea[2];
        bool isSame = false;
    };

    [[nodiscard]] Contents contents(const SlotView& first, const SlotView& second) const {
        // A slot without bytes of its own may point at bytes of another slot.
        const bool sameOffset = first.offset == second.offset;
        const auto all = std::max(first.size(), second.size());
        const SlotBytes before = before_.bytesAt(first, all);
        const SlotBytes after = after_.bytesAt(second, all);
        if (sameOffset && std::ranges::equal(before, after)) {
            return {.payload = {}, .oemArea = {}, .isSame = true};
        }
        const auto isAnySet = [](SlotBytes bytes) {
            return std::ranges::any_of(bytes, [](std::uint8_t byte) { return byte != 0; });
        };
        SlotView older = first;
        SlotView newer = second;
        if (sameOffset && older.size() == 0 && isAnySet(before)) {
            older = {.offset = first.offset, .payload = newer.payload, .oemArea = newer.oemArea};
        } else if (sameOffset && newer.size() == 0 && isAnySet(after)) {
            newer = {.offset = second.offset, .payload = older.payload, .oemArea = older.oemArea};
        }
        Contents found{
            .payload = {before_.payload(older), after_.payload(newer)},
            .oemArea = {before_.oemArea(older), after_.oemArea(newer)},
        };
        found.isSame = std::ranges::equal(found.payload[0], found.payload[1]) &&
                       std::ranges::equal(found.oemArea[0], found.oemArea[1]);
        return found;
    }

    [[nodiscard]] bool isSame(unsigned id) const {
        return contents(before_.slot(id), after_.slot(id)).isSame &&
               std::ranges::all_of(board::slotFields, [&](const board::ControlField& field) {
                   const RegisterView older = slotView(before_, id, field);
                   const RegisterView newer = slotView(after_, id, field);
                   return older.raw == newer.raw && older.named == newer.named;
               });
    }

    void findFate(unsigned id) {
        const bool was = before_.slot(id).isOccupied;
        const bool is = after_.slot(id).isOccupied;
        if (was == is || isSame(id)) {
            return;
        }
        if (was) {
            fates_.before.at(id).fate = Fate::goes;
        } else {
            fates_.after.at(id).fate = Fate::comes;
        }
    }

    // What must be the same in both slots of a move; none: the module has no such mark. The first
    // marks are the surest. The payload's bytes are kept as a text: GCC 12 warns of a comparison of
    // vectors of bytes.
    using Mark = std::optional<std::pair<std::string, std::string>>;

    static std::string bytesOf(const BoardView& view, const SlotView& slot) {
        const auto all = view.bytesAt(slot, slot.size());
        return {all.begin(), all.end()};
    }
    static Mark bytesAndObject(const BoardView& view, const SlotView& slot) {
        return slot.size() == 0 ? Mark() : Mark({bytesOf(view, slot), slot.object});
    }
    static Mark bytesAlone(const BoardView& view, const SlotView& slot) {
        return slot.size() == 0 ? Mark() : Mark({bytesOf(view, slot), {}});
    }
    static Mark objectAlone(const BoardView& /*view*/, const SlotView& slot) {
        return slot.object.empty() ? Mark() : Mark({{}, slot.object});
    }

    void findMoves() {
        for (const auto mark : {bytesAndObject, bytesAlone, objectAlone}) {
            std::map<std::pair<std::string, std::string>, std::vector<unsigned>> gone;
            for (unsigned id = board::slotCount; id >= 1; --id) { // the first slot comes last
                const auto key = mark(before_, before_.slot(id));
                if (fates_.before.at(id).fate == Fate::goes && key) {
                    gone[*key].push_back(id);
                }
            }
            for (unsigned id = 1; id <= board::slotCount; ++id) {
                const auto key = mark(after_, after_.slot(id));
                const auto found = key ? gone.find(*key) : gone.end();
                const bool comes = fates_.after.at(id).fate == Fate::comes;
                if (!comes || found == gone.end() || found->second.empty()) {
                    continue;
                }
                const unsigned from = found->second.back();
                found->second.pop_back();
                fates_.before.at(from) = {.fate = Fate::moves,
                                          .other = static_cast<std::uint8_t>(id)};
                fates_.after.at(id) = {.fate = Fate::moves,
                                       .other = static_cast<std::uint8_t>(from)};
            }
        }
    }

    void report(unsigned id) {
        const auto& was = fates_.before.at(id);
        const auto& is = fates_.after.at(id);
        ChangeList list(changes_, placeOf(id));
        if (was.fate == Fate::goes) {
            list.removed(before_.slot(id).kind);
        } else if (was.fate == Fate::moves) {
            ChangeList moved(changes_, placeOf(was.other), placeOf(id));
            moved.moved(before_.slot(id).kind);
            compareAll(id, was.other, moved);
        } else if (is.fate == Fate::comes) {
            list.added(after_.slot(id).kind);
        } else if (is.fate == Fate::stays) {
            compareAll(id, id, list);
            return;
        }
        compareRest(id, list);
    }

    void compareAll(unsigned from, unsigned to, ChangeList& list) {
        for (const board::ControlField& field : board::slotFields) {
            compareRegister(field.bits, slotView(before_, from, field), slotView(after_, to, field),
                            list);
        }
        const std::size_t old = list.size();
        compareContents(contents(before_.slot(from), after_.slot(to)), list);
        fates_.before.at(from).isPayloadReported = list.size() != old;
    }

    static void compareContents(const Contents& found, ChangeList& list) {
        if (found.isSame) {
            return;
        }
        const auto hasBytes = [&](int board) {
            return !found.payload[board].empty() || !found.oemArea[board].empty();
        };
        if (!hasBytes(0)) {
            list.added("payload");
        } else if (!hasBytes(1)) {
            list.removed("payload");
        } else {
            if (!std::ranges::equal(found.payload[0], found.payload[1])) {
                comparePayloads(found.payload[0], found.payload[1], list);
            }
            if (!std::ranges::equal(found.oemArea[0], found.oemArea[1])) {
                compareOemAreas(found.oemArea[0], found.oemArea[1], list);
            }
        }
    }

    // The registers of an empty slot that are not 0, as the module left or found them.
    void compareRest(unsigned id, ChangeList& list) {
        const bool wasEmpty = !before_.slot(id).isOccupied;
        for (const board::ControlField& field : board::slotFields) {
            const RegisterView older = slotView(before_, id, field);
            const RegisterView newer = slotView(after_, id, field);
            if (!isZero(field.bits, wasEmpty ? older : newer)) {
                compareRegister(field.bits, older, newer, list);
            }
        }
    }

    const BoardView& before_;
    const BoardView& after_;
    std::vector<Change>& changes_;
    SlotFates fates_{};
};

} // namespace

SlotFates compareSlots(const BoardView& before, const BoardView& after,
                       std::vector<Change>& changes) {
    return SlotComparison(before, after, changes).compare();
}

} // namespace zolt_board
