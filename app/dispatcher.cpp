#include "app/dispatcher.h"

#include "app/menus.h"
#include "bus/all_devices_path.h"
#include "bus/zolt_info_properties.h"
#include "console/input.h"
#include "console/output.h"
#include "cpld/control_registers.h"
#include "cpld/picpwr_info.h"
#include "i2c/bus_recovery.h"
#include "i2c/dynamic_nodes.h"
#include "i2c/i2c_topology.h"
#include "i2c/node_properties.h"
#include "payload/cir_payload.h"
#include "payload/oem_area.h"
#include "payload/riser_slot_map.h"

#include <exception>
#include <iterator>
#include <limits>

namespace zolt {

namespace {

constexpr std::uint8_t anyByte = std::numeric_limits<std::uint8_t>::max();
constexpr std::uint8_t highestPicpwr = 63;

constexpr bool isZero(std::uint8_t value) {
    return value == 0;
}

constexpr bool isNoDeviceType(std::uint8_t value) {
    return value >= DEVICE_TYPE_NOT_GIVEN;
}

constexpr Question picpwrOrAll{
    .argument = &OptionArgs::picpwrId,
    .isMissing = isZero,
    .prompt = [] { write("Enter the PICPWR ID: (Enter 0 for all PICPWRs)"); },
    .highestAnswer = anyByte,
};

constexpr Question picpwr{
    .argument = &OptionArgs::picpwrId,
    .isMissing = isZero,
    .prompt = [] { write("Enter the PICPWR ID:"); },
    .highestAnswer = highestPicpwr,
};

constexpr Question moduleClass{
    .argument = &OptionArgs::moduleSelector,
    .isMissing = isZero,
    .prompt = printModuleClassMenu,
    .highestAnswer = anyByte,
};

constexpr Question moduleType{
    .argument = &OptionArgs::moduleSelector,
    .isMissing = isZero,
    .prompt = printModuleTypeMenu,
    .highestAnswer = anyByte,
};

constexpr Question deviceType{
    .argument = &OptionArgs::deviceType,
    .isMissing = isNoDeviceType,
    .prompt = printDeviceTypeMenu,
    .highestAnswer = anyByte,
};

// Each run of an option that shows the service connects to the system bus anew. A missing bus does
// not disturb the other options, and a bus that returns serves the next run. The views print their
// own failures.
template <typename View>
Status onSystemBus(View show) {
    auto bus = sdbusplus::bus::new_default_system();
    show(bus);
    flush(); // closing the connection may wait for the bus
    return statusDone;
}

Status showInfoProperties(const OptionArgs&) {
    return onSystemBus(PrintZoltInfoProperties);
}

Status showCirProperties(const OptionArgs& given) {
    return onSystemBus([&](auto& bus) { PrintAllDevicesPath(bus, given.moduleSelector); });
}

constexpr OptionRow rows[] = {
    {1, "PICPWR info", &picpwrOrAll,
     [](const OptionArgs& given) { return showPicpwrInfo(given.picpwrId); }},
    {2, "CIR payloads", &picpwr,
     [](const OptionArgs& given) { return showCirPayload(given.picpwrId, given.format); }},
    {3, "OEM area", &picpwr,
     [](const OptionArgs& given) { return showOemArea(given.picpwrId, given.format); }},
    {4, "Riser slot mapping blob", nullptr,
     [](const OptionArgs& given) { return showRiserSlotMap(given.format); }},
    {5, "Control registers", &moduleClass,
     [](const OptionArgs& given) { return showControlRegisters(given.moduleSelector); }},
    {6, "PICPWR nodes info", &picpwrOrAll,
     [](const OptionArgs& given) { return printPicpwrNodes(given.picpwrId); }},
    {7, "Discoverable nodes info", &deviceType,
     [](const OptionArgs& given) { return printDiscoverableNodes(given.deviceType); }},
    {8, "All I2C nodes info", &deviceType,
     [](const OptionArgs& given) { return printAllI2cNodes(given.deviceType); }},
    {9, "Create dynamic device node", nullptr,
     [](const OptionArgs&) { return createDynamicNodes(); }},
    {10, "Delete dynamic device node", nullptr,
     [](const OptionArgs&) { return deleteDeviceNode(); }},
    {11, "DBUS Zolt Info Properties", nullptr, showInfoProperties},
    {12, "DBUS Zolt CIR Properties", &moduleType, showCirProperties},
    {13, "Read Node Proprty", nullptr, [](const OptionArgs&) { return readNodeProperty(); }},
    {14, "Update Node Property", nullptr,
     [](const OptionArgs&) { return promptUpdateNodeProperty(); }},
    {15, "Perform Bus Recovery", nullptr, [](const OptionArgs&) { return performBusRecovery(); }},
};

bool isMissing(const Question& question, const OptionArgs& given) {
    return question.isMissing(given.*question.argument);
}

// Returns false when the answer is not a number or too high. The operation then must not run.
bool ask(const Question& question, OptionArgs& given) {
    std::int8_t answer = 0; // the end of input leaves 0
    question.prompt();
    if (readByte(answer) == Reading::notANumber) {
        write("\nscanf error");
        return false;
    }
    const auto value = static_cast<std::uint8_t>(answer);
    given.*question.argument = value;
    // The operator who types the argument also chooses the display: 0 makes the operation ask.
    given.format = 0;
    return value <= question.highestAnswer;
}

} // namespace

std::span<const OptionRow> optionRows() {
    return rows;
}

void runOption(OptionArgs given) {
    if (given.option == 0 || given.option > std::size(rows)) {
        return;
    }
    const OptionRow& row = rows[given.option - 1];
    const bool complete =
        row.question == nullptr || !isMissing(*row.question, given) || ask(*row.question, given);
    if (!complete || row.run(given) != statusDone) {
        write("Unable to perform the desired operation\n");
    }
}

void runOptionGuarded(const OptionArgs& given) {
    try {
        runOption(given);
    } catch (const std::exception& error) {
        print<"Exception : %s\n">(std::string_view(error.what()));
    }
}

} // namespace zolt
