#include "board/payload_block.h"

#include "board/cpld_map.h"

#include <algorithm>
#include <limits>
#include <string>

namespace board {

namespace {

// Refuses bytes that run past the block, and names their key.
[[noreturn]] void refusePastEnd(TomlTable& table, const Slot& slot, std::uint32_t start) {
    const auto oemStart = static_cast<std::uint32_t>(start + slot.payload.size());
    const bool payloadFits = slot.payload.empty() || oemStart <= payloadRoom;
    const bool isModule = table.node("module") != nullptr;
    const std::string key = isModule ? "module" : payloadFits ? "oem_area" : "payload";
    const std::uint32_t offset = key == "oem_area" ? oemStart : start;
    table.place(key).refuse("slot: '" + key + "' at offset " + std::to_string(offset) +
                            " runs past the payload block's " + std::to_string(payloadRoom) +
                            " bytes");
}

} // namespace

std::uint32_t PayloadBlock::next() const {
    std::uint32_t offset = 0;
    for (const Placed& placed : placed_) {
        offset = std::max(offset, placed.end + 1);
    }
    return offset;
}

void PayloadBlock::place(TomlTable& table, Slot& slot) {
    const auto size = static_cast<std::uint32_t>(slot.payload.size() + slot.oemArea.size());
    const auto start = static_cast<std::uint32_t>(
        table.integer("payload_offset", 0, std::numeric_limits<std::uint16_t>::max())
            .value_or(size == 0 ? 0 : next()));
    slot.payloadOffset = static_cast<std::uint16_t>(start);
    if (size == 0) {
        return; // a slot without bytes may point at another slot's
    }
    if (start + size > payloadRoom) {
        refusePastEnd(table, slot, start);
    }
    for (const Placed& other : placed_) {
        if (start < other.end && other.start < start + size) {
            table.place("payload_offset")
                .refuse("slot: the bytes at offset " + std::to_string(start) +
                        " overlap bytes of slot " + std::to_string(other.slot));
        }
    }
    placed_.push_back({.slot = slot.id, .start = start, .end = start + size});
}

} // namespace board
