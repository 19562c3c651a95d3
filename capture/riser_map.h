// Reads the riser slot mapping blob.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

namespace capture {

/// Reads the named area. If this fails, reads the registers of the blob one by one, up to the first
/// one that cannot be read.
void readRiserMap(Observation& observation, const Progress& progress);

} // namespace capture
