#include "tests/fuzz/bus_core_state.h"

#include "tests/fuzz/bytes.h"

#include <array>
#include <set>
#include <span>

namespace zolt::fuzz {

namespace {

// A name ends with a NUL. The bytes behind it are zero, because names are compared as a whole.
void requireName(std::span<const char, CONTROL_TEXT_SIZE> name) {
    const auto end = std::ranges::find(name, '\0');
    require(end != name.end());
    require(std::all_of(end, name.end(), [](char byte) { return byte == '\0'; }));
}

} // namespace

void requireSound(const BusCore& core) {
    require(core.busCount <= BUS_CORE_BUSES && core.deviceCount <= BUS_CORE_DEVICES &&
            core.propertyCount <= BUS_CORE_PROPERTIES && core.faultCount <= BUS_CORE_FAULTS);
    std::set<std::uint32_t> buses;
    for (const BusCoreBus& bus : std::span(core.buses).first(core.busCount)) {
        require(bus.number <= BUS_CORE_HIGHEST_BUS && buses.insert(bus.number).second);
        require(!bus.isIndexNode || (bus.parent != bus.number && buses.contains(bus.parent)));
        requireName(bus.typeName);
    }
    std::set<std::array<std::uint32_t, 2>> targets;
    for (const BusCoreDevice& device : std::span(core.devices).first(core.deviceCount)) {
        require(buses.contains(device.bus));
        require(device.address >= 1 && device.address <= BUS_CORE_HIGHEST_ADDRESS);
        require(targets.insert({device.bus, device.address}).second);
        require(device.hasNode || device.memory != nullptr);
        require((device.memory == nullptr) == (device.memorySize == 0));
        requireName(device.typeName);
    }
    std::set<std::array<std::uint32_t, 3>> properties;
    for (const BusCoreProperty& property : std::span(core.properties).first(core.propertyCount)) {
        require(buses.contains(property.bus));
        require(property.target == 0 || targets.contains({property.bus, property.target}));
        require(properties.insert({property.bus, property.target, property.id}).second);
    }
}

} // namespace zolt::fuzz
