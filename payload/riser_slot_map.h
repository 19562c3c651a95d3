// The riser slot mapping blob: main menu option 4.
#pragma once

#include "console/status.h"

#include <cstdint>
#include <vector>

namespace zolt {

/// Fetches the blob and shows it.
///
/// @param format  0 to let the operator choose, else the display of showByChoice().
/// @return statusDone; statusNothingToShow when the choice was not a number; statusOutOfMemory;
///         statusRawReadFailed. Each of them was reported.
Status showRiserSlotMap(std::uint8_t format);

/// Shows one display of a fetched blob.
///
/// @param blob      what was fetched.
/// @param blobSize  how many bytes the platform says it delivered; what is beyond them, or not
///                  there, is not shown.
/// @param choice    1 raw dump, 2 human readable, 3 nothing.
void printRiserSlotMap(std::vector<std::uint8_t> blob, std::uint32_t blobSize, std::uint8_t choice);

} // namespace zolt
