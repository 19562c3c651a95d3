// The PICPWR information report: main menu option 1.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

/// Prints presence, module class, payload offset and DSL identifiers.
///
/// @param picpwrId  a PICPWR from 1 to 63, or 0 for all; any other ID shows nothing.
/// @return statusDone, also when registers could not be read; statusRawReadFailed when a payload
///         offset could not, which ends the report.
Status showPicpwrInfo(std::uint8_t picpwrId);

} // namespace zolt
