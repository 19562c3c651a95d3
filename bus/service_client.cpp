#include "bus/service_client.h"

#include "console/output.h"

#include <string_view>

namespace zolt {

PropertyMap getAllProperties(sdbusplus::bus_t& bus, const char* service, const std::string& path,
                             const char* interface) {
    auto request =
        bus.new_method_call(service, path.c_str(), "org.freedesktop.DBus.Properties", "GetAll");
    request.append(interface);
    auto reply = bus.call(request);
    PropertyMap properties;
    reply.read(properties);
    return properties;
}

bool getManagedObjects(sdbusplus::bus_t& bus, const char* service, const std::string& path,
                       ManagedObjects& objects) {
    try {
        auto request = bus.new_method_call(
            service, path.c_str(), "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
        auto reply = bus.call(request);
        reply.read(objects);
        return !reply.is_method_error();
    } catch (const sdbusplus::exception::SdBusError& error) {
        print<"failed to get managed objects err%s\n">(std::string_view(error.what()));
        flush();
        return false;
    }
}

} // namespace zolt
