// Prints the CIR properties of one module object.
#pragma once

#include <sdbusplus/bus.hpp>

#include <cstdint>
#include <string>

namespace zolt {

/// Prints a module's CIR (identification payload) as the service publishes it. Prints a failure in
/// the report's place; throws nothing.
/// @param moduleClass module type minus 1: 0 backplane, 1 puck, 2 RFC, any other CEM
/// @param objectPath  path of the module's object
void PrintAllProperties(sdbusplus::bus_t& bus, std::uint8_t moduleClass,
                        const std::string& objectPath);

} // namespace zolt
