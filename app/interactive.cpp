#include "app/interactive.h"

#include "app/dispatcher.h"
#include "app/menus.h"
#include "console/input.h"
#include "console/output.h"

#include <cstdint>

namespace zolt {

void runInteractive() {
    std::int8_t option = 0;
    // The pass that reads 100 still hands it to the dispatcher, which has no such option.
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
