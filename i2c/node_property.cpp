#include "i2c/node_property.h"

#include "i2c/bus_control_record.h"
#include "i2c/bus_device.h"

#include <array>

namespace zolt {

int requestNodeProperty(std::uint32_t propertyId, int bus, std::uint32_t target,
                        std::uint32_t& value) {
    BusControlRecord record(BusCommand::getProperty);
    record.set(get_property::target, target);
    record.set(get_property::propertyId, propertyId);
    std::array<std::uint8_t, 4> reply;
    const int result = sendControl(bus, record, reply);
    if (result >= 0) {
        value = busNumberAt(reply, 0);
    }
    return result;
}

} // namespace zolt
