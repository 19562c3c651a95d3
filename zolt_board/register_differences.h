// Compares registers: the two views of a field, then all that no field explains.
#pragma once

#include "zolt_board/board_view.h"
#include "zolt_board/change_list.h"

#include "board/control_register_layout.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zolt_board {

/// A field as its two readers find it.
struct RegisterView {
    std::optional<board::Bytes> named{}; ///< what its name delivers; none: it has no name
    std::uint32_t raw = 0;
};

/// @param name   in the HAL; empty: the field has none
/// @param block  the raw registers of the slot or of the instance
[[nodiscard]] RegisterView viewOf(const board::CpldContents& contents, const std::string& name,
                                  const board::BitField& field,
                                  std::span<const std::uint8_t> block);

/// Whether the field reads 0 in both views.
[[nodiscard]] bool isZero(const board::BitField& field, const RegisterView& view);

/// Adds one change if both views change from the same value to the same value, else one for each
/// view that changes.
void compareRegister(const board::BitField& field, const RegisterView& before,
                     const RegisterView& after, ChangeList& changes);

/// Compares the control registers of all module classes.
void compareControlRegisters(const BoardView& before, const BoardView& after,
                             std::vector<Change>& changes);

/// Compares the riser slot mapping, and then the names and raw registers that no other comparison
/// explains: names that overrides add, bits without a field, raw registers that are overridden.
void compareOtherRegisters(const BoardView& before, const BoardView& after,
                           std::vector<Change>& changes);

} // namespace zolt_board
