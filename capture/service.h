// Reads what the service publishes on the system bus.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

namespace capture {

/// Asks for the properties of the information object, for the objects of each module type, and for
/// the CIR properties of each object. A call that gets no reply within the bus library's time-out
/// is an error like any other.
void readService(Observation& observation, const Progress& progress);

} // namespace capture
