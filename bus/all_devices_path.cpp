#include "bus/all_devices_path.h"

#include "bus/all_properties.h"
#include "bus/service_client.h"
#include "console/output.h"

#include <string>
#include <string_view>

namespace zolt {

namespace {

void writeLine(std::string_view text) {
    print<"%s\n">(text);
    flush();
}

} // namespace

void PrintAllDevicesPath(sdbusplus::bus_t& bus, std::uint8_t moduleType) {
    ManagedObjects objects;
    if (!getManagedObjects(bus, zoltService, managerPath(moduleType), objects)) {
        writeLine("PrintAllDevicesPath: GetManagedObjects() failed to get GetManagedObjects !.");
        return;
    }
    if (objects.empty()) {
        writeLine("No DBUS objects of this module type are present");
        return;
    }
    const auto moduleClass = static_cast<std::uint8_t>(moduleType - 1);
    for (const auto& [path, interfaces] : objects) {
        writeLine(path.str);
        PrintAllProperties(bus, moduleClass, path.str);
    }
}

} // namespace zolt
