// Method calls to a service on the system bus. Each function makes one call and blocks until the
// reply, an error or the bus's own time-out.
#pragma once

#include "bus/property_value.h"
#include "bus/service_names.h"

#include <sdbusplus/bus.hpp>

#include <string>

namespace zolt {

/// Gets all properties of one interface of an object (Properties.GetAll).
/// @throws sdbusplus::exception::SdBusError, which names the failed call, when the bus cannot be
///         reached, the service, object or interface is unknown, or the reply has another form
[[nodiscard]] PropertyMap getAllProperties(sdbusplus::bus_t& bus, const char* service,
                                           const std::string& path, const char* interface);

/// Gets the objects below the object manager at @p path (GetManagedObjects).
/// @param objects receives the objects, added to its content
/// @return false when the call failed, after the error is printed
[[nodiscard]] bool getManagedObjects(sdbusplus::bus_t& bus, const char* service,
                                     const std::string& path, ManagedObjects& objects);

} // namespace zolt
