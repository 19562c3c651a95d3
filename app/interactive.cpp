#include "app/interactive.h"

#include "app/dispatcher.h"
#include "app/menus.h"
#include "console/input.h"
#include "console/output.h"

#include <cstdint>

namespace zolt {

void runInteractive() {
    std::int8_t option = 0;
    // The pass that reads 100 also calls the dispatcher, which ignores a number without a row.
    while (option != exitOption) {
        printMainMenu();
        if (readByte(option) == Reading::notANumber) {
            write("\nscanf error");
            return;
        }
        runOptionGuarded({.option = static_cast<std::uint8_t>(option)});
    }
}

} // namespace zolt
