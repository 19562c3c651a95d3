#include "standin/i2c_bus/server/bus_state.h"

#include <utility>

namespace standin {

BusState::BusState() : core_(std::make_unique<BusCore>()) {
    busCoreInit(core_.get());
}

int BusState::addMemory(std::uint32_t bus, std::uint32_t address, std::vector<std::uint8_t> content,
                        std::uint32_t pointerWidth, bool readOnly) {
    std::vector<std::uint8_t>& kept = memories_.emplace_back(std::move(content));
    return busCoreAddMemory(core_.get(), bus, address, kept.data(),
                            static_cast<std::uint32_t>(kept.size()), pointerWidth, readOnly);
}

} // namespace standin
