// Reads the payloads of the modules.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

namespace capture {

/// Reads the payload of each slot with a module and a payload offset. readSlots() must have read
/// the registers. Each range of bytes is read once, even if several slots point at it.
void readPayloads(Observation& observation, const Progress& progress);

} // namespace capture
