#include "capture/node_properties.h"

#include "i2c/bus_device.h"
#include "i2c/node_property.h"

#include <cerrno>

namespace capture {

namespace {

NodePropertyReading read(const NodeProperty& property) {
    NodePropertyReading reading{.bus = property.bus, .target = property.target, .id = property.id};
    const auto bus =
        zolt::BusDevice::silently(zolt::BusPath(static_cast<std::int32_t>(property.bus)).c_str());
    reading.opened = bus.isOpen();
    if (!reading.opened || zolt::requestNodeProperty(property.id, bus.descriptor(), property.target,
                                                     reading.value) < 0) {
        reading.error = errno;
    }
    return reading;
}

} // namespace

void readNodeProperties(std::span<const NodeProperty> properties, Observation& observation,
                        const Progress& progress) {
    unsigned done = 0;
    for (const NodeProperty& property : properties) {
        progress("node properties", done++, static_cast<unsigned>(properties.size()));
        observation.nodeProperties.push_back(read(property));
    }
}

} // namespace capture
