#include "i2c/bus_recovery.h"

#include "console/output.h"
#include "i2c/bus_control_record.h"
#include "i2c/bus_device.h"
#include "i2c/node_questions.h"

#include <string_view>

namespace zolt {

namespace {

struct Step {
    BusRecoveryMode mode;
    std::string_view failure;
};

// The steps of a recovery, in order.
constexpr Step steps[] = {
    {I2C_CP_MODE_TYPE_RESET_STOP, "I2C_CP_MODE_TYPE_RESET_STOP failed. \n"},
    {I2C_CP_MODE_TYPE_RESET_HOLD_CLOCK_LOW, "I2C_CP_MODE_TYPE_RESET_HOLD_CLOCK_LOW failed. \n"},
    {I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL, "I2C_CP_MODE_TYPE_RESET_CLOCK_UNRAVEL failed. \n"},
};

} // namespace

Status busRecoveryStep(std::int32_t bus, BusRecoveryMode mode) {
    const BusPath path(bus);
    BusControlRecord record(BusCommand::recoverBus);
    record.set(recover_bus::mode, mode);
    const BusDevice device(path.c_str());
    if (!device.isOpen()) {
        return statusNothingToShow;
    }
    const int result = sendControl(device.descriptor(), record);
    print<"Status [%d] for node name: [%s]\n">(result, path);
    if (result < 0) {
        print<"IOCTL failed with status %d\n">(result);
        return statusNothingToShow;
    }
    return statusDone;
}

Status performBusRecovery() {
    std::int32_t node = nodeNumberNotGiven;
    if (!askNumber("Enter Node Num:", "\nInvalid Device Type\n", node)) {
        return statusNothingToShow;
    }
    Status status = statusDone;
    for (const Step& step : steps) {
        status = busRecoveryStep(node, step.mode);
        if (status != statusDone) {
            write(step.failure);
        }
    }
    return status;
}

} // namespace zolt
