// Keeps the command away from the I2C buses of the machine itself.
//
// The preload library does so only in programs that load it. The measures here are the kernel's.
// They also hold for programs that are statically linked, drop the library or make system calls
// themselves. On a machine without I2C buses the command notices none of them.
#pragma once

#include <cstdint>
#include <set>

namespace standin {

/// Takes the machine's I2C buses away from the process that is about to become the command.
///
///   - Inherited descriptors of buses are closed.
///   - When busNodes() finds nodes of buses, the process can no longer gain privileges from a
///     program.
///   - When the process could open such a node, it gets its own mounts, which hide the node. It
///   also
///     loses its open directories and four capabilities, because they could bypass these mounts.
///
/// @param boardBuses  numbers of buses that stay within reach: they are those of a board
/// @throw std::system_error when the kernel refuses one of these steps; what() names the step
void keepFromMachineBuses(const std::set<std::uint32_t>& boardBuses);

} // namespace standin
