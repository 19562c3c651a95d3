#include "zolt_board/summary.h"

#include "board/cpld_map.h"

#include <algorithm>

namespace zolt_board {

namespace {

using board::Board;
using board::FaultKind;
using board::Slot;

std::string list(std::string_view what, const std::vector<std::string>& numbers) {
    std::string text(what);
    for (const std::string& number : numbers) {
        text.append(&number == &numbers.front() ? " " : ", ").append(number);
    }
    return text;
}

// Adds a line about the occupied slots that lack something.
template <typename Lacks>
void addSlots(std::string_view one, std::string_view several, const Board& board,
              std::vector<std::string>& missing, Lacks lacks) {
    std::vector<std::string> numbers;
    for (const Slot* const slot : slotsInOrder(board)) {
        if (isOccupied(*slot) && lacks(*slot)) {
            numbers.push_back(std::to_string(slot->id));
        }
    }
    if (!numbers.empty()) {
        missing.push_back(list(numbers.size() == 1 ? one : several, numbers));
    }
}

// What a rule takes away for the whole run.
void addFault(const board::FaultRule& rule, std::vector<std::string>& missing) {
    const bool isForever = rule.after == 0 && rule.times == 0 && rule.status != 0;
    if (rule.kind == FaultKind::bus) {
        missing.emplace_back("the system bus");
    } else if (rule.kind == FaultKind::service) {
        missing.emplace_back("the service");
    } else if (rule.kind == FaultKind::halObject && isForever) {
        missing.push_back("the HAL object " + rule.subject);
    }
}

std::vector<std::string> missingOf(const Board& board) {
    std::vector<std::string> missing;
    addSlots("the payload of slot", "the payloads of slots", board, missing,
             [](const Slot& slot) { return slot.payload.empty(); });
    addSlots("the object of slot", "the objects of slots", board, missing,
             [](const Slot& slot) { return !slot.payload.empty() && slot.objectName.empty(); });
    if (std::ranges::all_of(board.riserMap, [](std::uint8_t byte) { return byte == 0; })) {
        missing.emplace_back("the riser slot mapping");
    }
    if (board.i2c.indexNodes.empty()) {
        missing.emplace_back("all I2C nodes");
    }
    for (const board::FaultRule& rule : board.faults) {
        addFault(rule, missing);
    }
    return missing;
}

} // namespace

Summary summaryOf(const Board& board) {
    Summary summary;
    for (const Slot& slot : board.slots) {
        ++summary.slotsByDstat[slot.dstat];
        if (isOccupied(slot)) {
            ClassCount& count = summary.classes[slot.moduleClass];
            ++count.modules;
            if (!slot.moduleType.empty()) {
                count.types.insert(slot.moduleType);
            }
        }
    }
    summary.slotsByDstat[0] += board::slotCount - board.slots.size(); // these have no table
    summary.missing = missingOf(board);
    return summary;
}

bool isOccupied(const Slot& slot) {
    return slot.dstat != 0 || !slot.payload.empty() || !slot.oemArea.empty();
}

std::vector<const Slot*> slotsInOrder(const Board& board) {
    std::vector<const Slot*> slots;
    slots.reserve(board.slots.size());
    for (const Slot& slot : board.slots) {
        slots.push_back(&slot);
    }
    std::ranges::sort(slots, {}, &Slot::id);
    return slots;
}

std::string objectOf(const Slot& slot) {
    return slot.moduleType.empty() ? "" : slot.moduleType + "/" + slot.objectName;
}

} // namespace zolt_board
