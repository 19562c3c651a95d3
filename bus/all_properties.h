// The CIR properties of one module object.
#pragma once

#include <sdbusplus/bus.hpp>

#include <cstdint>
#include <string>

namespace zolt {

/// Prints a module's CIR (identification payload) as the service publishes it. Whatever fails is
/// printed in the report's place; nothing is thrown.
/// @param moduleClass module type less one: 0 backplane, 1 puck, 2 RFC, all others CEM
/// @param objectPath  the module's object
void PrintAllProperties(sdbusplus::bus_t& bus, std::uint8_t moduleClass,
                        const std::string& objectPath);

} // namespace zolt
