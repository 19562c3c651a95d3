// SPDX-License-Identifier: Apache-2.0 OR GPL-2.0-only
// Functions that the core's files share.
#pragma once

#include "standin/i2c_bus/core/bus_core.h"

int busCoreControl(struct BusCore* core, struct BusCoreBus* bus, struct i2c_msg* messages,
                   uint32_t count);
int busCorePlain(struct BusCore* core, const struct BusCoreBus* bus, struct i2c_msg* messages,
                 uint32_t count);

// Returns what busCoreAddDeviceNode() would return, and adds nothing.
int busCoreCheckDeviceNode(struct BusCore* core, uint32_t bus, uint32_t address);

// Asks the faults about an operation. Returns the error of the fault that applies, or 0, and sets
// the core's delay.
int busCoreFaultOf(struct BusCore* core, uint32_t bus, uint32_t operation, uint32_t selector);

// Asks the faults about a plain transfer, whose messages have a selector each: their address.
// Returns the fault that applies, or null. The fault applies from the first message that it fits,
// and does not delay a transfer that ends before.
const struct BusCoreFault* busCorePlainFaultOf(struct BusCore* core, uint32_t bus,
                                               const struct i2c_msg* messages, uint32_t count);

// Whether a fault fits the selector of an operation.
bool busCoreSelects(const struct BusCoreFault* fault, uint32_t selector);

// Ends the faults that wait for the recovery of a bus.
void busCoreEndFaults(struct BusCore* core, uint32_t bus);

// The lowest number above those of all buses.
uint32_t busCoreNextBus(const struct BusCore* core);
