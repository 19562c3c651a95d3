// The PICPWR information report: main menu option 1.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

/// Prints the status flags, module class, payload offset and DSL identifiers of PICPWRs. An
/// unreadable register gets an error line and ends its PICPWR's part of the report; an unreadable
/// DSL identifier only gets the line.
///
/// @param picpwrId  a PICPWR from 1 to 63, or 0 for all; any other number shows nothing.
/// @return statusDone, even when registers could not be read; statusRawReadFailed when a payload
///         offset could not be read, which ends the whole report.
Status showPicpwrInfo(std::uint8_t picpwrId);

} // namespace zolt
