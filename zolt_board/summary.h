// What a board has, counted.
#pragma once

#include "board/board.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zolt_board {

/// The modules of one class.
struct ClassCount {
    std::size_t modules = 0;
    std::set<std::string> types{}; ///< by which the service knows them; may be empty
};

struct Summary {
    std::array<std::size_t, 4> slotsByDstat{};  ///< of all 63 slots; 0: the slot is empty
    std::map<std::uint8_t, ClassCount> classes; ///< of the occupied slots, by module class
    std::vector<std::string> missing;           ///< what a full board has and this one lacks
};

[[nodiscard]] Summary summaryOf(const board::Board& board);

/// Whether a slot has a module, or bytes of one.
[[nodiscard]] bool isOccupied(const board::Slot& slot);

/// The slots that a description describes, by their number.
[[nodiscard]] std::vector<const board::Slot*> slotsInOrder(const board::Board& board);

/// The object of a slot's module: "puck/puck1". Empty: the service does not publish the module.
[[nodiscard]] std::string objectOf(const board::Slot& slot);

} // namespace zolt_board
