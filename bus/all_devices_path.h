// Prints the service's objects of one module type: main menu option 12.
#pragma once

#include <sdbusplus/bus.hpp>

#include <cstdint>

namespace zolt {

/// Prints every object that the service manages for a module type, sorted by path: the object's
/// path, then the module's CIR properties.
/// @param moduleType 1 (backplane) to 11 (battery), as the module-type menu numbers them; for any
///                   other, the view asks at an empty path, which the bus library refuses
void PrintAllDevicesPath(sdbusplus::bus_t& bus, std::uint8_t moduleType);

} // namespace zolt
