// The riser slot mapping blob: main menu option 4.
#pragma once

#include "console/status.h"

#include <cstdint>
#include <vector>

namespace zolt {

/// Fetches the blob and shows it.
///
/// @param format  a choice of show(), or 0 to let the operator choose.
/// @return statusDone; statusNothingToShow when no choice can be read; statusOutOfMemory;
///         statusRawReadFailed. Each failure is printed.
Status showRiserSlotMap(std::uint8_t format);

/// Shows one display of a fetched blob.
///
/// @param blob      the fetched bytes.
/// @param blobSize  number of bytes that the platform states; the displays show no more than this
///                  and no more than @p blob.
/// @param choice    1 raw dump, 2 human readable, 3 nothing.
void printRiserSlotMap(std::vector<std::uint8_t> blob, std::uint32_t blobSize, std::uint8_t choice);

} // namespace zolt
