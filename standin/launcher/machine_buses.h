// The I2C buses of the machine itself, which no command on a board is to reach.
//
// The preload library lets no program that is loaded with it near one. Here the kernel is told so,
// which holds for programs that are linked statically, run without the library or call the kernel
// themselves, too. A machine without buses shows its commands nothing of this.
#pragma once

namespace standin {

/// For the process that is about to become the command: takes away what leads to a bus that has a
/// node below /dev. Inherited descriptors of buses are closed; where there are nodes, the process
/// gains no privileges any more by starting a program; where it could open one, it gets mounts of
/// its own in which none can be opened, and loses what it could get round them with: open
/// directories, and the capabilities for that.
/// @throw std::system_error when the kernel does not let it be done
void keepFromMachineBuses();

} // namespace standin
