#include "i2c/dynamic_nodes.h"

#include "console/output.h"
#include "i2c/bus_control_record.h"
#include "i2c/bus_device.h"
#include "i2c/device_types.h"
#include "i2c/node_property.h"
#include "i2c/node_questions.h"

#include <array>

namespace zolt {

namespace {

// The driver needs these numbers for every device node, in the order of the record's device part.
constexpr std::array<std::uint32_t, 8> devicePart{16, 0, 0, 100, 256, 40, 0, 0};

// The part of the record that index nodes and device nodes share. A property that could not be
// queried enters the record as noAnswer; the driver decides what to do.
BusControlRecord nodeRecord(const BusDevice& bus, std::uint32_t deviceType, std::uint32_t index) {
    BusControlRecord record(BusCommand::createNode);
    record.set(create_node::index, index);
    record.set(create_node::property8, queryNodeProperty(8, bus.descriptor(), busNodeTarget));
    record.set(create_node::property10, queryNodeProperty(10, bus.descriptor(), busNodeTarget));
    record.set(create_node::typeName, deviceTypeName(deviceType));
    return record;
}

struct NodeReply {
    int result; // of the ioctl; the other members count unless it is negative
    std::uint32_t status;
    std::uint32_t bus;
};

NodeReply requestNode(BusDevice& bus, const BusControlRecord& record) {
    std::array<std::uint8_t, 8> reply;
    const int result = sendControl(bus.descriptor(), record, reply);
    if (result < 0) {
        printRefusal(result);
    }
    bus.close();
    return {result, busNumberAt(reply, 0), busNumberAt(reply, 4)};
}

// The lines show status and bus number as signed numbers.
void printNode(Line<Number, Number> line, const NodeReply& reply) {
    line(static_cast<std::int32_t>(reply.status), static_cast<std::int32_t>(reply.bus));
}

bool removeDevice(std::int32_t parent, std::uint32_t target) {
    BusDevice bus(BusPath(parent).c_str());
    if (!bus.isOpen()) {
        return false;
    }
    BusControlRecord record(BusCommand::removeDevice);
    record.set(remove_device::target, target);
    const int result = sendControl(bus.descriptor(), record);
    if (result < 0) {
        printRefusal(result);
        return false;
    }
    bus.close();
    print<"Device Remove Status: [%d] Under Parent Node: [/dev/i2c-%d]\n">(result, parent);
    return true;
}

} // namespace

std::uint32_t queryNodeProperty(std::int32_t propertyId, int bus, std::uint32_t target) {
    std::uint32_t value = noAnswer;
    if (const int result =
            requestNodeProperty(static_cast<std::uint32_t>(propertyId), bus, target, value);
        result < 0) {
        printRefusal(result);
    }
    return value;
}

std::uint32_t createIndexNode(std::uint32_t deviceType, std::uint32_t index,
                              std::int32_t parentBus) {
    BusDevice bus(BusPath::asField(parentBus).c_str());
    if (!bus.isOpen()) {
        return nodeNotCreated;
    }
    const NodeReply reply = requestNode(bus, nodeRecord(bus, deviceType, index));
    if (reply.result < 0) {
        return nodeNotCreated;
    }
    printNode(line<"Index Node Status:Node Status: [%d] &  Name: [/dev/i2c-%d]\n">, reply);
    return reply.bus;
}

Status createDeviceNode(std::uint32_t deviceType, std::uint32_t index, std::uint32_t indexBus,
                        std::uint32_t target) {
    const BusPath path(static_cast<std::int32_t>(indexBus));
    BusDevice bus(path.c_str());
    if (!bus.isOpen()) {
        return statusIoFailed;
    }
    BusControlRecord record = nodeRecord(bus, deviceType, index);
    for (std::size_t i = 0; i < devicePart.size(); ++i) {
        record.set(create_node::devicePart[i], devicePart[i]);
    }
    record.set(create_node::target, target);
    record.set(create_node::devicePath, path);
    const NodeReply reply = requestNode(bus, record);
    if (reply.result < 0) {
        return statusIoFailed;
    }
    printNode(line<"Device Node Status: [%d] &  Name: [/dev/i2c-%d]\n">, reply);
    return reply.result;
}

void createNodes(std::uint32_t deviceType, std::uint32_t index, std::int32_t parentBus,
                 std::uint32_t target) {
    const std::uint32_t bus = createIndexNode(deviceType, index, parentBus);
    if (bus == nodeNotCreated || target == 0) {
        write("Index Node Creation Failed.\n");
    } else if (createDeviceNode(deviceType, index, bus, target) == statusIoFailed) {
        write("Device Node Creation Failed.\n");
    }
}

Status createDynamicNodes() {
    std::int32_t deviceType = nodeNumberNotGiven;
    std::int32_t index = nodeNumberNotGiven;
    std::int32_t parent = nodeNumberNotGiven;
    std::uint32_t target = targetNotGiven;
    if (!askDeviceType(deviceType) || !askNumber("Enter Index:", "\nInvalid Index\n", index) ||
        !askNumber("Enter Parent Node Num:", "\nInvalid Parent Node\n", parent) ||
        !askTarget(target)) {
        return statusNothingToShow;
    }
    createNodes(static_cast<std::uint32_t>(deviceType), static_cast<std::uint32_t>(index), parent,
                target);
    return statusDone;
}

Status deleteDeviceNode() {
    std::int32_t parent = nodeNumberNotGiven;
    std::uint32_t target = targetNotGiven;
    if (!askNumber("Enter Parent Node Num:", "\nInvalid Index Node\n", parent) ||
        !askTarget(target)) {
        return statusNothingToShow;
    }
    if (!removeDevice(parent, target)) {
        write("Device Node Creation Failed.\n"); // the tool has no failure line for a removal
    }
    return statusDone;
}

} // namespace zolt
