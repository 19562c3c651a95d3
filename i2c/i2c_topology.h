// Prints the I2C topology from the platform's system information: options 6 to 8.
//
// A listing asks the sysinfo parser library for one device type's tree at a time. It hands each
// tree back before it asks for the next. A listing that finds nothing also counts as done.
#pragma once

#include "console/status.h"

#include <cstdint>

namespace zolt {

/// Prints index nodes of device type PICPWR with their sub nodes.
///
/// @param picpwrId  1 to 255 prints the first node with this index; 0 prints the nodes up to and
///                  including the first one with index 0.
/// @return statusDone. A message reports a missing node or missing data.
Status printPicpwrNodes(std::uint8_t picpwrId);

/// Prints the index nodes that can be discovered, each with all its sub nodes.
///
/// @param deviceType  device-type code, 0 to 164; from 165 on, all types in ascending order.
/// @return statusDone. A message reports a single type without data.
Status printDiscoverableNodes(std::uint8_t deviceType);

/// Prints all index nodes with their sub nodes, otherwise as printDiscoverableNodes() does.
Status printAllI2cNodes(std::uint8_t deviceType);

} // namespace zolt
