// The service's objects of one module type, menu option 12.
#pragma once

#include <sdbusplus/bus.hpp>

#include <cstdint>

namespace zolt {

/// Prints the path of every object that the service manages for a module type, in the order of the
/// paths, each followed by the module's CIR properties.
/// @param moduleType 1 (backplane) to 11 (battery), as the module-type menu numbers them; any other
///                   is asked for at an empty path, which the bus refuses
void PrintAllDevicesPath(sdbusplus::bus_t& bus, std::uint8_t moduleType);

} // namespace zolt
