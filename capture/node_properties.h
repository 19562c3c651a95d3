// Reads properties of the I2C bus driver's nodes.
#pragma once

#include "capture/observation.h"
#include "capture/progress.h"

#include <cstdint>
#include <span>

namespace capture {

/// A property of a bus or of a device on it.
struct NodeProperty {
    std::uint32_t bus = 0;    ///< the N of /dev/i2c-N, 0 to 1048575
    std::uint32_t target = 0; ///< address of the device; 0: the bus itself
    std::uint32_t id = 0;

    bool operator==(const NodeProperty&) const = default;
};

/// Asks the driver for each of the properties, in their order.
void readNodeProperties(std::span<const NodeProperty> properties, Observation& observation,
                        const Progress& progress);

} // namespace capture
