#include "board/cpld_contents.h"

#include <algorithm>

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
    std::ranges::copy(slot.dslIds, block.begin() + 6);
    return block;
}

// The HAL has names for the block's fields, and delivers each field from bit 0 on.
void nameFields(const Slot& slot, CpldContents& contents) {
    const std::string prefix = "PICPWR_" + std::to_string(slot.id);
    const auto flag = [](bool set) { return Bytes{static_cast<std::uint8_t>(set)}; };
    auto& named = contents.named;
    named[prefix + "_DSTAT"] = {slot.dstat};
    named[prefix + "_DBYP"] = flag(slot.dbyp);
    named[prefix + "_DPEN"] = flag(slot.dpen);
    named[prefix + "_APEN"] = flag(slot.apen);
    named[prefix + "_ASTAT"] = flag(slot.astat);
    named[prefix + "_MOD_CLASS"] = {slot.moduleClass};
    named[prefix + "_MOD_CLASS_IDX"] = {slot.moduleClassIndex};
    named[prefix + "_PAYLOAD_OFFSET"] = {static_cast<std::uint8_t>(slot.payloadOffset & 0xFF),
                                         static_cast<std::uint8_t>(slot.payloadOffset >> 8)};
}

void placeSlot(const Slot& slot, CpldContents& contents) {
    const auto block = encodeBlock(slot);
    std::ranges::copy(block, contents.raw.begin() + slotBlockStart + slotBlockSize * (slot.id - 1));
    nameFields(slot, contents);
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
    for (std::uint8_t id = 1; id <= slotCount; ++id) {
        nameFields({.id = id}, contents); // a slot without a table has named registers, too
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
