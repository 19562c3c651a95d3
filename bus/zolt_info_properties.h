// Prints the service's information object: main menu option 11.
#pragma once

#include <sdbusplus/bus.hpp>

namespace zolt {

/// Prints name and value of every property of the information object, sorted by name: the two
/// completion flags as 0 or 1, all others as 16-bit numbers. A property of another type ends the
/// listing. Prints every failure; throws nothing.
void PrintZoltInfoProperties(sdbusplus::bus_t& bus);

} // namespace zolt
