// Functions that the core's files share.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

int busCoreControl(struct BusCore* core, struct BusCoreBus* bus, struct i2c_msg* messages,
                   uint32_t count);
int busCorePlain(struct BusCore* core, const struct BusCoreBus* bus, struct i2c_msg* messages,
                 uint32_t count);

// Returns what busCoreAddDeviceNode() would return, and adds nothing.
int busCoreCheckDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address);

// The error of the fault that fits; 0 when none fits. If several fit, the last one holds.
int busCoreFaultOf(const struct BusCore* core, uint32_t bus, uint32_t operation, uint32_t selector);

// The lowest number above those of all buses.
uint32_t busCoreNextBus(const struct BusCore* core);
