// Interactive mode: the loop of the main menu.
#pragma once

namespace zolt {

/// Prints the main menu, reads an option and runs it, again and again. Returns after option 100, or
/// when the input is not a number. At the end of input the last option runs again, without end.
void runInteractive();

} // namespace zolt
