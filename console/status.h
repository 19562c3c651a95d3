// The result that an operation returns to the dispatcher. The console never shows the numbers.
#pragma once

#include <cstdint>

namespace zolt {

using Status = std::int32_t;

constexpr Status statusDone = 0;           ///< done; a listing that found nothing is done, too
constexpr Status statusNothingToShow = 2;  ///< input could not be read, or there is nothing to show
constexpr Status statusOutOfMemory = 4;    ///< an area could not be allocated
constexpr Status statusRawReadFailed = 11; ///< the CPLD refused a raw read
constexpr Status statusIoFailed = -1; ///< an I2C device could not be opened or refused an ioctl

} // namespace zolt
