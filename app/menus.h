// The menus of the front end: options, module classes, module types.
#pragma once

namespace zolt {

/// Prints the main menu and its prompt: one line for each row of the dispatcher's table.
void printMainMenu();

/// Prints the menu of module classes (option 5) and its prompt.
void printModuleClassMenu();

/// Prints the menu of module types (option 12) and its prompt.
void printModuleTypeMenu();

} // namespace zolt
