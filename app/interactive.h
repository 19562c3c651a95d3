// Interactive mode: the main menu's loop.
#pragma once

namespace zolt {

/// Prints the menu, reads an option, runs it, and starts again, until 100 is read or the input is
/// not a number. At the end of input the last option runs again, for ever.
void runInteractive();

} // namespace zolt
