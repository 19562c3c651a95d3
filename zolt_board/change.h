// One difference between two boards, and its text.
#pragma once

#include "board/document.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zolt_board {

/// A value on one of the boards; none when that board has no such value.
using Shown = std::optional<board::WrittenValue>;

struct Change {
    enum class Kind : std::uint8_t {
        changed,   ///< `what` has another value
        added,     ///< only the second board has `what`
        removed,   ///< only the first board has `what`
        reordered, ///< both boards have `what`, in another order
        moved,     ///< `what` is at `place`, and was at `movedFrom`
    };
    enum class View : std::uint8_t {
        all,   ///< whatever shows the value
        named, ///< the register's named read alone
        raw,   ///< the raw register alone
    };

    Kind kind = Kind::changed;
    std::string place{};     ///< "slot 5", "/dev/i2c-12"
    std::string part{};      ///< a part of the place, "end point 2"; empty: the place itself
    std::string movedFrom{}; ///< where the first board has what is at the place; empty: there
    std::string what{};      ///< "dpen", "riser", "payload byte 0x14"
    View view = View::all;
    Shown before{};
    Shown after{};
    std::string nothing = "none"; ///< stands for a value that a board does not have
};

/// The change on one line, without a newline. No text of a board reaches a terminal as control
/// characters, and long values are cut.
[[nodiscard]] std::string textOf(const Change& change);

/// Whether both are the same value: two texts in a description that nobody can tell apart.
[[nodiscard]] bool isSame(const Shown& before, const Shown& after);

} // namespace zolt_board
