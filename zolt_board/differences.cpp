#include "zolt_board/differences.h"

#include "zolt_board/board_view.h"
#include "zolt_board/change_list.h"
#include "zolt_board/i2c_differences.h"
#include "zolt_board/register_differences.h"
#include "zolt_board/rule_differences.h"
#include "zolt_board/service_differences.h"
#include "zolt_board/slot_differences.h"

#include "board/cpld_map.h"

namespace zolt_board {

namespace {

void compareHalObjects(const board::Board& before, const board::Board& after,
                       std::vector<Change>& changes) {
    for (const auto& [name, first] : before.halObjects) {
        const board::HalObject& second = after.halObjects.at(name);
        const auto mostBytes = [](const board::HalObject& object) {
            return object.mostBytes >= board::payloadBlockSize
                       ? Shown()
                       : Shown(board::WrittenNumber{object.mostBytes});
        };
        ChangeList list(changes, std::string("hal ").append(name));
        list.value("interrupt_callback", first.interruptCallback, second.interruptCallback);
        list.value("unregister_status", board::WrittenNumber{first.unregisterStatus},
                   board::WrittenNumber{second.unregisterStatus});
        list.value("most_bytes", mostBytes(first), mostBytes(second), "no limit");
    }
}

} // namespace

std::vector<Change> differences(const board::Board& before, const board::Board& after) {
    const BoardView first(before);
    const BoardView second(after);
    std::vector<Change> changes;
    const SlotFates fates = compareSlots(first, second, changes);
    compareControlRegisters(first, second, changes);
    compareOtherRegisters(first, second, changes);
    compareHalObjects(before, after, changes);
    compareServices(first, second, fates, changes);
    compareI2c(before.i2c, after.i2c, changes);
    compareFaults(before, after, changes);
    return changes;
}

} // namespace zolt_board
