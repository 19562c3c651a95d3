// The I2C topology as the platform's system information describes it: options 6 to 8.
//
// Every listing asks the sysinfo parser library for one device type's tree at a time and hands each
// tree back before it asks for the next. A listing that finds nothing is done all the same.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

/// Prints index nodes of device type PICPWR with their sub nodes.
///
/// @param picpwrId  the first node whose index is this, 1 to 255; 0 prints the nodes up to and
///                  including the first one whose index is 0.
/// @return statusDone, also when there is no such node or no data, which is printed.
Status printPicpwrNodes(std::uint8_t picpwrId);

/// Prints the index nodes that can be discovered, each with all its sub nodes.
///
/// @param deviceType  device-type code, 0 to 164; from 165 on every type, in ascending order.
/// @return statusDone, also when the type has no data, which is printed for a single type.
Status printDiscoverableNodes(std::uint8_t deviceType);

/// Prints all index nodes with their sub nodes; otherwise as printDiscoverableNodes().
Status printAllI2cNodes(std::uint8_t deviceType);

} // namespace zolt
