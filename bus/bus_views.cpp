#include "bus/bus_views.h"

#include "bus/all_devices_path.h"
#include "bus/zolt_info_properties.h"
#include "console/output.h"

namespace {

// However a view ends, the tool prints next.
class HandedOut {
public:
    HandedOut() = default;
    HandedOut(const HandedOut&) = delete;
    HandedOut& operator=(const HandedOut&) = delete;
    ~HandedOut() { zolt::flush(); }
};

void showInfoProperties() {
    const HandedOut output;
    auto bus = sdbusplus::bus::new_default_system();
    zolt::PrintZoltInfoProperties(bus);
}

void showCirProperties(std::uint8_t moduleType) {
    const HandedOut output;
    auto bus = sdbusplus::bus::new_default_system();
    zolt::PrintAllDevicesPath(bus, moduleType);
}

} // namespace

extern "C" [[gnu::visibility("default")]] constinit const zolt::BusViews zoltBusViews{
    .showInfoProperties = showInfoProperties,
    .showCirProperties = showCirProperties,
};
