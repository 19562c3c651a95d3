#include "app/one_shot.h"

#include "console/output.h"

namespace zolt {

namespace {

constexpr std::uint8_t createNodesOption = 9;

// Creates an index node and a device node on it from the command line's values alone.
void createNodes(const CommandLine&) {
    write("Index Node Creation Failed.\n");
}

} // namespace

void runOneShot(const CommandLine& line) {
    if (line.arguments.option == createNodesOption) {
        createNodes(line);
    } else {
        runOptionGuarded(line.arguments);
    }
}

} // namespace zolt
