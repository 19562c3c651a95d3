// Shows a payload raw or human readable, as the caller says or as the operator chooses.
#pragma once

#include "console/status.h"
#include "payload/field.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace zolt {

/// The bytes of a payload, and what the two displays need to show them.
struct Display {
    const std::vector<std::uint8_t>& bytes;
    std::size_t dumpLength;    ///< length of the raw dump, limited to the bytes at hand
    std::uint32_t dumpAddress; ///< address that the dump shows for the first byte
    void (*decode)(std::span<const std::uint8_t> bytes, TakeField take);
};

/// Address that the dumps show for raw CPLD address 0.
constexpr std::uint32_t cpldWindow = 0x91000000;

/// Shows one display: 1 a raw dump, 2 human readable, 3 nothing. Any other choice prints a
/// complaint.
void show(const Display& display, std::int8_t choice);

/// Shows the display @p format at once. When @p format is 0, asks the operator for a choice and
/// shows it, again and again, until the operator chooses to go back.
///
/// @param view  shows a display; called with each choice, also with an invalid one.
/// @return statusDone; statusNothingToShow, after a message, when the operator's input is not a
///         number or has ended.
Status showByChoice(std::uint8_t format, const std::function<void(std::int8_t choice)>& view);

} // namespace zolt
