#include "bus/bus_views.h"

#include "bus/all_devices_path.h"
#include "bus/zolt_info_properties.h"

namespace {

void showInfoProperties() {
    auto bus = sdbusplus::bus::new_default_system();
    zolt::PrintZoltInfoProperties(bus);
}

void showCirProperties(std::uint8_t moduleType) {
    auto bus = sdbusplus::bus::new_default_system();
    zolt::PrintAllDevicesPath(bus, moduleType);
}

} // namespace

extern "C" [[gnu::visibility("default")]] constinit const zolt::BusViews zoltBusViews{
    .showInfoProperties = showInfoProperties,
    .showCirProperties = showCirProperties,
};
