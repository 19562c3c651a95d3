// The I2C side of a board as a tree.
#pragma once

#include "board/i2c_model.h"
#include "zolt_board/tree.h"

namespace zolt_board {

/// Adds the index nodes and the buses. A node with a parent stands below the parent bus, a bus
/// below the node that leads to it, and a device below its bus.
void addI2c(const board::I2cDescription& i2c, const Output& output, Branch& root);

} // namespace zolt_board
