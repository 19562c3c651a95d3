// The service's information object, menu option 11.
#pragma once

#include <sdbusplus/bus.hpp>

namespace zolt {

/// Prints name and value of every property of the information object in the order of their names:
/// the two completion flags as 0 or 1, all others as 16-bit numbers. A property of another type
/// ends the listing. Whatever fails is printed; nothing is thrown.
void PrintZoltInfoProperties(sdbusplus::bus_t& bus);

} // namespace zolt
