#include "board/cpld_contents.h"

#include "board/slot_registers.h"

#include <algorithm>
#include <array>
#include <span>

namespace board {

namespace {

// Packs the register block of one slot.
std::array<std::uint8_t, slotBlockSize> encodeBlock(const Slot& slot) {
    const auto flags = slot.dstat << 6 | slot.dbyp << 5 | slot.dpen << 4 | slot.apen << 3 |
                       static_cast<int>(slot.astat);
    std::array<std::uint8_t, slotBlockSize> block{
        static_cast<std::uint8_t>(flags),
        slot.moduleClass,
        slot.moduleClassIndex,
        static_cast<std::uint8_t>(slot.payloadOffset & 0xFF),
        static_cast<std::uint8_t>(slot.payloadOffset >> 8),
    };
    std::ranges::copy(slot.dslIds, block.begin() + firstDslId);
    return block;
}

// The HAL has names for the block's fields, and delivers each field from bit 0 on.
void nameFields(unsigned slot, std::span<const std::uint8_t> block, CpldContents& contents) {
    for (const ControlField& field : slotRegisters.fields) {
        contents.named[nameOf(slotRegisters, slot, field)] = field.bits.delivered(block);
    }
}

void placeSlot(const Slot& slot, CpldContents& contents) {
    const auto block = encodeBlock(slot);
    std::ranges::copy(block, contents.raw.begin() + addressOf(slotRegisters, slot.id));
    nameFields(slot.id, block, contents);
}

void placeRiserMap(const Bytes& blob, CpldContents& contents) {
    contents.named[std::string(riserMapName)] = blob;
    const auto room = std::min<std::size_t>(blob.size(), riserMapSize);
    std::copy_n(blob.begin(), room, contents.raw.begin() + riserMapStart);
}

} // namespace

Bytes payloadBlock(const Board& board) {
    Bytes block(payloadBlockSize);
    for (const Slot& slot : board.slots) {
        // The offset of a slot without bytes may lie beyond the block.
        if (!slot.payload.empty() || !slot.oemArea.empty()) {
            const auto start = block.begin() + payloadIndexOfOffset0 + slot.payloadOffset;
            std::ranges::copy(slot.oemArea, std::ranges::copy(slot.payload, start).out);
        }
    }
    return block;
}

CpldContents deriveCpldContents(const Board& board) {
    CpldContents contents;
    for (unsigned id = 1; id <= slotCount; ++id) {
        // A slot without a table has named registers, too.
        nameFields(id, std::array<std::uint8_t, slotBlockSize>{}, contents);
    }
    for (const Slot& slot : board.slots) {
        placeSlot(slot, contents);
    }
    std::ranges::copy(payloadBlock(board), contents.raw.begin() + payloadBlockStart);
    for (const ControlRegister& control : board.controlRegisters) {
        contents.named[control.name] = control.value;
    }
    for (const auto& [address, byte] : board.controlBytes) {
        contents.raw[address] = byte;
    }
    placeRiserMap(board.riserMap, contents);
    for (const auto& [name, bytes] : board.namedOverrides) {
        contents.named[name] = bytes;
    }
    for (const auto& [address, byte] : board.rawOverrides) {
        contents.raw[address] = byte;
    }
    return contents;
}

} // namespace board
