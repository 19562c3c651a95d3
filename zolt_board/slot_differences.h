// Compares the slots of two boards: their registers, and the modules in them.
#pragma once

#include "zolt_board/board_view.h"
#include "zolt_board/change.h"

#include <array>
#include <cstdint>
#include <vector>

namespace zolt_board {

/// What became of the slots.
struct SlotFates {
    enum class Fate : std::uint8_t { stays, comes, goes, moves };

    struct Slot {
        Fate fate = Fate::stays;
        std::uint8_t other = 0;         ///< of `moves`: the slot on the other board
        bool isPayloadReported = false; ///< a change of the payload's bytes is reported
    };
    std::array<Slot, board::slotCount + 1> before{}; ///< by PICPWR on the first board
    std::array<Slot, board::slotCount + 1> after{};  ///< by PICPWR on the second board
};

/// Compares all slots. A module that comes or goes is one change, its registers and bytes
/// included. A module whose bytes or whose object are in another slot, that was empty, has moved.
[[nodiscard]] SlotFates compareSlots(const BoardView& before, const BoardView& after,
                                     std::vector<Change>& changes);

} // namespace zolt_board
