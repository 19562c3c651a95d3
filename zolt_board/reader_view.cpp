#include "zolt_board/reader_view.h"

#include "board/cpld_map.h"
#include "zolt_board/joined.h"

#include <algorithm>

namespace zolt_board {

namespace {

constexpr std::size_t farthestRegister = 7; ///< of a field, in its block

// The value that a name's bytes stand for; none when they are not those of the field.
std::optional<std::uint32_t> valueOf(const board::Bytes& bytes, const board::BitField& field) {
    const std::size_t size = field.upperBits == 0 ? 1 : 2;
    if (bytes.size() != size) {
        return std::nullopt;
    }
    const std::uint32_t value = size == 1 ? bytes[0] : bytes[0] | std::uint32_t{bytes[1]} << 8;
    return value <= field.highest() ? std::optional(value) : std::nullopt;
}

} // namespace

std::string SlotReading::name() const {
    return joined("slot ", id);
}

ReaderView::ReaderView(const board::Board& board)
    : board_(&board), contents_(board::deriveCpldContents(board)), readable_(board) {
    for (unsigned id = 1; id <= board::slotCount; ++id) {
        slots_[id - 1] = slotReading(id);
    }
}

const board::Bytes* ReaderView::named(const std::string& name) const {
    const auto found = contents_.named.find(name);
    return found != contents_.named.end() && readable_.named(name) ? &found->second : nullptr;
}

std::span<const std::uint8_t> ReaderView::rawBlock(const board::BitField& field,
                                                   std::uint16_t address) const {
    const bool isReadable =
        readable_.raw(address + std::uint32_t{field.offset}, 1) &&
        (field.upperBits == 0 || readable_.raw(address + std::uint32_t{field.upperOffset}, 1));
    return isReadable ? std::span(contents_.raw).subspan(address, farthestRegister + 1)
                      : std::span<const std::uint8_t>();
}

std::optional<std::uint32_t> ReaderView::value(const std::string& name,
                                               const board::BitField& field,
                                               std::uint16_t address) const {
    if (const board::Bytes* const bytes = named(name)) {
        if (const auto value = valueOf(*bytes, field)) {
            return value;
        }
    }
    const auto raw = rawBlock(field, address);
    return raw.empty() ? std::nullopt : std::optional(field.decode(raw));
}

std::span<const std::uint8_t> ReaderView::payloadRoom() const {
    return std::span(contents_.raw).subspan(board::payloadsStart, board::payloadRoom);
}

// Readers ask the HAL for the bytes, and read them raw if it refuses. It refuses a read that does
// not end within the block.
std::optional<std::span<const std::uint8_t>> ReaderView::payloadAt(std::uint32_t offset) const {
    const auto room = payloadRoom().subspan(std::min<std::size_t>(offset, payloadRoom().size()));
    const std::uint32_t address = board::payloadsStart + offset;
    for (const std::uint32_t fetched : {oemAreaFetch, payloadFetch}) {
        std::size_t delivered = fetched;
        if (fetched <= room.size() &&
            readable_.payloadBlock(board::payloadIndexOfOffset0 + offset, fetched)) {
            const auto object = board_->halObjects.find(std::string(board::payloadBlockName));
            delivered = object == board_->halObjects.end()
                            ? fetched
                            : std::min<std::size_t>(fetched, object->second.mostBytes);
        } else if (!readable_.raw(address, fetched)) {
            continue;
        }
        return room.first(std::min(delivered, room.size()));
    }
    return std::nullopt;
}

SlotReading ReaderView::slotReading(unsigned id) const {
    SlotReading slot{.id = id};
    const auto described =
        std::ranges::find(board_->slots, id, [](const board::Slot& each) { return each.id; });
    if (described != board_->slots.end()) {
        slot.described = &*described;
    }
    const auto read = [&](std::string_view key) {
        const board::ControlField& field = board::slotField(key);
        return value(board::nameOf(board::slotRegisters, id, field), field.bits,
                     board::addressOf(board::slotRegisters, id));
    };
    slot.dstat = read("dstat");
    slot.moduleClass = read("module_class");
    slot.payloadOffset = read("payload_offset");
    // While the discovery goes on, the offset register may not yet be set.
    if (slot.dstat == discovered && slot.payloadOffset) {
        slot.payload = payloadAt(*slot.payloadOffset);
    }
    return slot;
}

} // namespace zolt_board
