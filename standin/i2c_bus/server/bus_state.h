// The bus driver's state with the memory that it points at.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <deque>
#include <memory>
#include <vector>

namespace standin {

/// Owns a bus core and the memories of the devices on its buses.
class BusState {
public:
    BusState();

    [[nodiscard]] BusCore& core() { return *core_; }

    /// Adds memory for plain transfers. Parameters and result are like those of busCoreAddMemory().
    int addMemory(std::uint32_t bus, std::uint32_t address, std::vector<std::uint8_t> content,
                  std::uint32_t pointerWidth, bool readOnly);

private:
    std::unique_ptr<BusCore> core_; // too large for a stack
    std::deque<std::vector<std::uint8_t>> memories_;
};

} // namespace standin
