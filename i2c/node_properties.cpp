#include "i2c/node_properties.h"

#include "console/output.h"
#include "i2c/bus_control_record.h"
#include "i2c/bus_device.h"
#include "i2c/device_types.h"
#include "i2c/dynamic_nodes.h"
#include "i2c/node_questions.h"

namespace zolt {

namespace {

constexpr std::string_view parentPrompt = "Enter Parent Node Num:";

bool askProperty(std::int32_t& answer) {
    return askNumber("Enter Property Type:", "\nInvalid Property Type\n", answer);
}

} // namespace

Status readNodeProperty() {
    std::int32_t parent = nodeNumberNotGiven;
    std::int32_t propertyId = nodeNumberNotGiven;
    std::uint32_t target = targetNotGiven;
    if (!askNumber(parentPrompt, "\nInvalid Index Node\n", parent) || !askProperty(propertyId) ||
        !askTarget(target)) {
        return statusNothingToShow;
    }
    BusDevice bus(BusPath(parent).c_str());
    if (!bus.isOpen()) {
        return statusNothingToShow;
    }
    const std::uint32_t value = queryNodeProperty(propertyId, bus.descriptor(), target);
    if (value == noAnswer) {
        write("Property Read Failed.\n");
        return statusNothingToShow;
    }
    bus.close();
    print<"Property ID: [%d] and Property Value: [%d]\n">(propertyId,
                                                          static_cast<std::int32_t>(value));
    return statusDone;
}

Status updateNodeProperty(const BusPath& path, std::uint32_t deviceType, std::uint32_t index,
                          std::int32_t propertyId, std::uint32_t value, std::uint32_t target) {
    BusControlRecord record(BusCommand::updateProperty);
    record.set(update_property::index, index);
    record.set(update_property::target, target);
    record.set(update_property::value, value);
    record.set(update_property::propertyId, static_cast<std::uint32_t>(propertyId));
    record.set(update_property::typeName, deviceTypeName(deviceType));
    BusDevice bus(path.c_str());
    if (!bus.isOpen()) {
        return statusNothingToShow;
    }
    if (const int result = sendControl(bus.descriptor(), record); result < 0) {
        print<"IOCTL failed with status %d\n">(result);
        return statusNothingToShow;
    }
    bus.close();
    print<"Updated Property ID : %d and value : %d for node_name [%s]\n">(
        propertyId, static_cast<std::int32_t>(value), path);
    return statusDone;
}

Status promptUpdateNodeProperty() {
    std::int32_t deviceType = nodeNumberNotGiven;
    std::int32_t parent = nodeNumberNotGiven;
    std::int32_t index = nodeNumberNotGiven;
    std::uint32_t target = targetNotGiven;
    std::int32_t propertyId = nodeNumberNotGiven;
    std::int32_t value = nodeNumberNotGiven;
    if (!askDeviceType(deviceType) || !askNumber(parentPrompt, "\nInvalid Parent Node\n", parent) ||
        !askNumber("Enter Index:", "\nInvalid Index\n", index) || !askTarget(target) ||
        !askProperty(propertyId) ||
        !askNumber("Enter Property Value:", "\nInvalid Property Value\n", value)) {
        return statusNothingToShow;
    }
    const Status status = updateNodeProperty(
        BusPath::asField(parent), static_cast<std::uint32_t>(deviceType),
        static_cast<std::uint32_t>(index), propertyId, static_cast<std::uint32_t>(value), target);
    if (status != statusDone) {
        write("Failed to update property. \n");
    }
    return status;
}

} // namespace zolt
