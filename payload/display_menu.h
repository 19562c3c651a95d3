// How the payload views are shown: raw or human readable, as given or as the operator chooses.
#pragma once

#include "console/status.h"
#include "payload/field.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace zolt {

/// Bytes as both displays need them.
struct Display {
    const std::vector<std::uint8_t>& bytes;
    std::size_t dumpLength;    ///< bytes that the raw dump shows; no more than there are
    std::uint32_t dumpAddress; ///< shown for the first of them
    void (*decode)(std::span<const std::uint8_t> bytes, TakeField take);
};

/// Address that the dumps show for raw CPLD address 0.
constexpr std::uint32_t cpldWindow = 0x91000000;

/// Shows one display: 1 a raw dump, 2 human readable, 3 nothing. Any other choice is answered with
/// a complaint.
void show(const Display& display, std::int8_t choice);

/// Shows @p format at once or, when it is 0, what the operator chooses again and again, until that
/// is to go back.
///
/// @param view  called with each choice; it answers invalid ones itself.
/// @return statusDone; statusNothingToShow without a choice, which is printed: the text at hand is
///         not a number, or the input has ended.
Status showByChoice(std::uint8_t format, const std::function<void(std::int8_t choice)>& view);

} // namespace zolt
