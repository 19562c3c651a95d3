// What a board shows: its registers, its slots, its service. Overrides are applied.
#pragma once

#include "board/board.h"
#include "board/cpld_contents.h"
#include "board/service_model.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace zolt_board {

/// A slot as its readers find it.
struct SlotView {
    std::uint8_t id = 0;
    std::uint16_t offset = 0;  ///< of the payload, by the raw register
    std::uint32_t payload = 0; ///< bytes of the payload that the slot has at the offset
    std::uint32_t oemArea = 0; ///< bytes of the OEM area behind it
    bool isOccupied = false;   ///< discovery has a result, or there are bytes
    std::string kind{};        ///< what is in the slot, for people: "riser"
    std::string object{};      ///< path of the module's object on the bus; empty: not published

    [[nodiscard]] std::uint32_t size() const { return payload + oemArea; }
};

class BoardView {
public:
    explicit BoardView(const board::Board& board);

    [[nodiscard]] const board::Board& board() const { return *board_; }
    [[nodiscard]] const board::CpldContents& cpld() const { return cpld_; }

    /// @param id  1 to 63
    [[nodiscard]] const SlotView& slot(unsigned id) const { return slots_.at(id); }

    /// Registers behind the slot's payload offset; fewer at the end of the registers.
    [[nodiscard]] std::span<const std::uint8_t> bytesAt(const SlotView& slot,
                                                        std::uint32_t size) const;
    [[nodiscard]] std::span<const std::uint8_t> payload(const SlotView& slot) const;
    [[nodiscard]] std::span<const std::uint8_t> oemArea(const SlotView& slot) const;

    /// The register block of a slot.
    [[nodiscard]] std::span<const std::uint8_t> block(unsigned id) const;

private:
    void readSlot(unsigned id);
    void addBytes(const board::Slot& described);

    const board::Board* board_;
    board::CpldContents cpld_;
    std::array<SlotView, board::slotCount + 1> slots_{}; ///< by PICPWR
};

} // namespace zolt_board
