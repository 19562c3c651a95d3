// Reads the control registers of all module classes.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

namespace capture {

/// Reads each register of the report by name and raw, or only raw if the report does so.
void readControlRegisters(Observation& observation, const Progress& progress);

} // namespace capture
