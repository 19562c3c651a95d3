#include "capture/read_board.h"

#include "capture/control_registers.h"
#include "capture/payloads.h"
#include "capture/riser_map.h"
#include "capture/service.h"
#include "capture/slots.h"
#include "capture/topology.h"

namespace capture {

Observation readBoard(std::span<const NodeProperty> properties, const Progress& progress) {
    Observation observation;
    readSlots(observation, progress);
    readPayloads(observation, progress);
    readControlRegisters(observation, progress);
    readRiserMap(observation, progress);
    readTopology(observation, progress);
    readNodeProperties(properties, observation, progress);
    readService(observation, progress);
    return observation;
}

} // namespace capture
