// Reads the registers of the PICPWR slots.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"
#include "capture/registers.h"
#include "cpld/picpwr_block.h"

#include <cstdint>

namespace capture {

/// Reads the registers of all slots. Of a slot that is empty, or whose DSTAT cannot be read, it
/// reads only DSTAT: the reports read no further, either.
void readSlots(Observation& observation, const Progress& progress);

/// A register of PICPWR @p slot, as a report sees it. readSlots() must have read the register.
[[nodiscard]] Effective slotRegister(const Observation& observation, std::uint8_t slot,
                                     const zolt::PicpwrRegister& field);

} // namespace capture
