// One-shot mode: one operation from the command line.
#pragma once

#include "app/command_line.h"

namespace zolt {

/// Runs the operation that the command line asks for.
void runOneShot(const CommandLine& line);

} // namespace zolt
