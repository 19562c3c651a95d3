#include "app/one_shot.h"

#include "i2c/dynamic_nodes.h"

namespace zolt {

namespace {

constexpr std::uint8_t createNodesOption = 9;

} // namespace

void runOneShot(const CommandLine& line) {
    if (line.arguments.option == createNodesOption) {
        createNodes(line.arguments.deviceType, line.index, line.parentBus, line.targetAddress);
    } else {
        runOptionGuarded(line.arguments);
    }
}

} // namespace zolt
