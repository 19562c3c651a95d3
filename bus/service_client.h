// Questions to a service on the system bus. Each is one method call that blocks until the reply, an
// error or the bus's own time-out.
#pragma once

#include "bus/property_value.h"

#include <sdbusplus/bus.hpp>

#include <string>

namespace zolt {

/// The service that watches the module slots.
constexpr const char* zoltService = "com.tesk.bmc.zolt";

/// All properties of one interface of an object (Properties.GetAll).
/// @throws sdbusplus::exception::SdBusError named after the call that failed: the bus cannot be
///         reached, the service, object or interface is unknown, the reply is something else
[[nodiscard]] PropertyMap getAllProperties(sdbusplus::bus_t& bus, const char* service,
                                           const std::string& path, const char* interface);

/// The objects below @p path, which is that of an object manager (GetManagedObjects).
/// @param objects what was found is added here
/// @return false when the question failed; what failed has then been printed
[[nodiscard]] bool getManagedObjects(sdbusplus::bus_t& bus, const char* service,
                                     const std::string& path, ManagedObjects& objects);

} // namespace zolt
