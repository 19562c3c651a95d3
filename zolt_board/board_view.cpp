#include "zolt_board/board_view.h"

#include "board/bit_field.h"
#include "board/bus_names.h"
#include "board/cpld_map.h"
#include "board/document.h"
#include "board/module_layout.h"
#include "board/slot_registers.h"

#include <algorithm>

namespace zolt_board {

namespace {

constexpr const board::BitField& dstatField = board::slotField("dstat").bits;
constexpr const board::BitField& classField = board::slotField("module_class").bits;
constexpr const board::BitField& offsetField = board::slotField("payload_offset").bits;

std::string kindOf(std::uint8_t moduleClass) {
    switch (moduleClass) {
    case board::puckDeviceClass:
        return "puck";
    case board::rfcDeviceClass:
        return "rfc";
    case board::backplaneDeviceClass:
        return "bp";
    default:
        return std::string("module of class ")
            .append(board::tomlText(board::WrittenNumber{moduleClass, 2}));
    }
}

} // namespace

BoardView::BoardView(const board::Board& board) : board_(&board), cpld_(deriveCpldContents(board)) {
    for (unsigned id = 1; id <= board::slotCount; ++id) {
        readSlot(id);
    }
    for (const board::Slot& described : board.slots) {
        addBytes(described);
    }
}

std::span<const std::uint8_t> BoardView::block(unsigned id) const {
    return std::span(cpld_.raw).subspan(board::slotBlockStart + board::slotBlockSize * (id - 1),
                                        board::slotBlockSize);
}

std::span<const std::uint8_t> BoardView::bytesAt(const SlotView& slot, std::uint32_t size) const {
    const auto rest = std::span(cpld_.raw).subspan(
        std::min<std::size_t>(board::payloadsStart + slot.offset, cpld_.raw.size()));
    return rest.first(std::min<std::size_t>(size, rest.size()));
}

std::span<const std::uint8_t> BoardView::payload(const SlotView& slot) const {
    return bytesAt(slot, slot.payload);
}

std::span<const std::uint8_t> BoardView::oemArea(const SlotView& slot) const {
    return bytesAt(slot, slot.size()).subspan(payload(slot).size());
}

void BoardView::readSlot(unsigned id) {
    SlotView& slot = slots_.at(id);
    slot.id = static_cast<std::uint8_t>(id);
    slot.offset = static_cast<std::uint16_t>(offsetField.decode(block(id)));
    slot.isOccupied = dstatField.decode(block(id)) != 0;
    const auto moduleClass = static_cast<std::uint8_t>(classField.decode(block(id)));
    slot.kind = moduleClass == 0 ? "module" : kindOf(moduleClass);
}

void BoardView::addBytes(const board::Slot& described) {
    SlotView& slot = slots_.at(described.id);
    // An overridden register makes readers look elsewhere.
    if (slot.offset == described.payloadOffset) {
        slot.payload = static_cast<std::uint32_t>(described.payload.size());
        slot.oemArea = static_cast<std::uint32_t>(described.oemArea.size());
        slot.isOccupied = slot.isOccupied || slot.size() != 0;
    }
    if (const auto bytes = payload(slot); bytes.size() > 1) {
        slot.kind = kindOf(bytes[1]);
    }
    if (!described.moduleType.empty()) {
        slot.kind = described.moduleType;
        slot.object = std::string(board::servicePathPrefix)
                          .append(described.moduleType)
                          .append("/")
                          .append(described.objectName);
    }
}

} // namespace zolt_board
