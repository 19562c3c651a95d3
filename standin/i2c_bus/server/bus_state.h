// The bus driver's state with what it needs beside itself.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

#include <deque>
#include <memory>
#include <vector>

namespace standin {

/// A bus core, and the memories of the devices on its buses.
class BusState {
public:
    BusState();

    [[nodiscard]] BusCore& core() { return *core_; }

    /// A device that plain transfers reach. Parameters and result are those of busCoreAddMemory().
    int addMemory(std::uint32_t bus, std::uint32_t address, std::vector<std::uint8_t> content,
                  std::uint32_t pointerWidth, bool readOnly);

private:
    std::unique_ptr<BusCore> core_; // far too large for a stack
    std::deque<std::vector<std::uint8_t>> memories_;
};

} // namespace standin
