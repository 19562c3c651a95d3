// Findings of the slots: whether DSTAT, the class register and the payload tell the same.
#include "zolt_board/joined.h"
#include "zolt_board/payload_reading.h"
#include "zolt_board/subjects.h"

#include <algorithm>

namespace zolt_board {

namespace {

void checkAbsent(const SlotReading& slot, Findings& findings) {
    if (slot.dstat != 0 || slot.described == nullptr) {
        return;
    }
    const std::size_t payload = slot.described->payload.size();
    const std::size_t area = slot.described->oemArea.size();
    if (payload == 0 && area == 0) {
        return;
    }
    findings.push_back(
        {Kind::absentSlotWithPayload, slot.name(),
         joined("DSTAT is 0, and there is ", payload != 0 ? "a payload of " : "an OEM area of ",
                counted(payload != 0 ? payload : area, "byte")),
         "no payload, or a DSTAT of 1 to 3"});
}

void checkPresent(const SlotReading& slot, Findings& findings) {
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    if (slot.dstat != discovered || !slot.payload ||
        slot.payload->size() < board::payloadHeaderSize ||
        !std::ranges::all_of(slot.payload->first(board::payloadHeaderSize), isZero)) {
        return;
    }
    findings.push_back({Kind::presentSlotWithoutPayload, slot.name(),
                        joined("DSTAT is 3, and the ", board::payloadHeaderSize,
                               " bytes at payload offset ", *slot.payloadOffset, " are 0"),
                        "the header of a payload"});
}

void checkClass(const SlotReading& slot, Findings& findings) {
    const auto payload = payloadOf(slot);
    if (!payload || !slot.moduleClass || *slot.moduleClass == payload->deviceClass) {
        return;
    }
    findings.push_back({Kind::classRegisterDiffers, slot.name(),
                        joined("the class register has ", inHex(*slot.moduleClass, 2),
                               ", the payload ", inHex(payload->deviceClass, 2)),
                        "one class"});
}

} // namespace

void checkSlots(const ReaderView& board, Findings& findings) {
    for (const SlotReading& slot : board.slots()) {
        checkAbsent(slot, findings);
        checkPresent(slot, findings);
        checkClass(slot, findings);
    }
}

} // namespace zolt_board
