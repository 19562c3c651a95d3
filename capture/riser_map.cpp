#include "capture/riser_map.h"

#include "capture/registers.h"
#include "payload/riser_slot_map_source.h"
#include "platform/cpld_driver.h"

#include <algorithm>

namespace capture {

namespace {

void readRegisters(Observation& observation) {
    for (std::uint32_t i = 0; i < zolt::riserMapRawBytes; ++i) {
        std::uint8_t byte = 0;
        const auto status = cpld_read_device(&byte, zolt::riserMapDriverAddress + i, 1);
        Reading& reading =
            observation.rawBytes[static_cast<std::uint16_t>(zolt::riserMapRawAddress + i)];
        reading.status = status;
        if (status != 0) {
            return;
        }
        reading.bytes = {byte};
    }
}

} // namespace

void readRiserMap(Observation& observation, const Progress& progress) {
    progress("riser slot mapping", 0, 1);
    Reading& area = observation.named[std::string(zolt::riserMapName)];
    std::uint32_t size = 0;
    area.status = zolt::readArea(zolt::riserMapName, area.bytes, size);
    if (area.status != 0) {
        area.bytes.clear();
        readRegisters(observation);
        return;
    }
    // The report shows no more bytes than the HAL states.
    area.bytes.resize(std::min({area.bytes.size(), std::size_t{size}, mostAreaBytes}));
}

} // namespace capture
