#include "i2c/i2c_topology.h"

#include "console/output.h"
#include "i2c/device_types.h"
#include "platform/sysinfo.h"

#include <cstring>
#include <string_view>

namespace zolt {

namespace {

constexpr unsigned picpwrType = 16;

// Holds one device type's tree while the tool prints it.
class DeviceTypeTree {
public:
    explicit DeviceTypeTree(unsigned deviceType)
        : status_(i2c_parse_sysinfo(static_cast<int>(deviceType), &root_)) {}
    DeviceTypeTree(const DeviceTypeTree&) = delete;
    DeviceTypeTree& operator=(const DeviceTypeTree&) = delete;
    ~DeviceTypeTree() {
        flush();
        free_sysinfo(root_);
    }

    // A root with a status other than 0 must be handed back but not read.
    [[nodiscard]] bool hasData() const { return status_ == 0 && root_ != nullptr; }
    [[nodiscard]] const IndexNodeInfo* indexNodes() const { return root_->indexNodes; }

private:
    SysInfoTree* root_ = nullptr;
    int status_;
};

template <std::size_t Size>
std::string_view textOf(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

void printSubNodes(const IndexNodeInfo& node) {
    for (const auto* sub = node.subNodes; sub != nullptr; sub = sub->next) {
        write("\nSub Index Node Info\n");
        print<"Sub Index         = %d\n">(sub->subIndex);
        print<"Discoverable Node = %d\n">(sub->discoverable);
        print<"Node Name         = %s\n">(textOf(sub->name));
        print<"Sub Node Count    = %d\n">(sub->subNodeCount);
    }
}

// The PICPWR listing passes no type name. It also leaves out the lines of the slot.
void printIndexNode(const IndexNodeInfo& node, const std::string* typeName) {
    write("\n\nIndex Node Info\n");
    if (typeName != nullptr) {
        print<"Device Type       = %s\n">(*typeName);
    }
    print<"Index             = %d\n">(node.index);
    print<"Discoverable Node = %d\n">(node.discoverable);
    print<"Node Name         = %s\n">(textOf(node.name));
    print<"Physical Bus      = %d\n">(node.physicalBus);
    print<"Sub Node Count    = %d\n">(node.subNodeCount);
    print<"PICPWR ID         = %d\n">(node.picpwrId);
    print<"is_sl_src         = %d\n">(node.isSlSrc);
    print<"sl_src            = %d\n">(node.slSrc);
    print<"HW_UID            = 0x%02X\n">(node.hwUid);
    if (typeName != nullptr) {
        print<"Slot Number       = %d\n">(node.slotNumber);
        print<"Slot Type         = %d\n">(node.slotType);
    }
    print<"Bay ID            = %d\n">(node.bayId);
    printSubNodes(node);
}

using Filter = bool (*)(const IndexNodeInfo& node);

// Prints one device type, or withoutData when the type has no data. A listing of all types passes
// an empty text.
void printType(unsigned deviceType, Filter isShown, std::string_view withoutData) {
    const DeviceTypeTree tree(deviceType);
    if (!tree.hasData()) {
        write(withoutData);
        return;
    }
    const std::string name = deviceTypeName(deviceType);
    for (const auto* node = tree.indexNodes(); node != nullptr; node = node->next) {
        if (isShown(*node)) {
            printIndexNode(*node, &name);
        }
    }
}

Status printTypes(std::uint8_t requested, Filter isShown) {
    if (requested < deviceTypeCount) {
        printType(requested, isShown, "Input device type not found in sysfs\n");
        return statusDone;
    }
    for (unsigned deviceType = 0; deviceType < deviceTypeCount; ++deviceType) {
        printType(deviceType, isShown, "");
    }
    return statusDone;
}

// Returns false when no node has this index.
bool printFirstWithIndex(const IndexNodeInfo* node, std::uint8_t index) {
    while (node != nullptr && node->index != index) {
        node = node->next;
    }
    if (node == nullptr) {
        return false;
    }
    printIndexNode(*node, nullptr);
    return true;
}

// A node of index 0 ends the PICPWR list, even when nodes follow it.
void printThroughIndexZero(const IndexNodeInfo* node) {
    for (; node != nullptr; node = node->next) {
        printIndexNode(*node, nullptr);
        if (node->index == 0) {
            return;
        }
    }
}

} // namespace

Status printPicpwrNodes(std::uint8_t picpwrId) {
    const DeviceTypeTree tree(picpwrType);
    const IndexNodeInfo* nodes = nullptr;
    if (tree.hasData()) {
        nodes = tree.indexNodes();
    } else {
        write("Receved NULL data.\n");
    }
    if (picpwrId == 0) {
        printThroughIndexZero(nodes);
    } else if (!printFirstWithIndex(nodes, picpwrId)) {
        print<"PICPWR %d not found in sysfs\n">(picpwrId);
    }
    return statusDone;
}

Status printDiscoverableNodes(std::uint8_t deviceType) {
    return printTypes(deviceType, [](const IndexNodeInfo& node) { return node.discoverable == 1; });
}

Status printAllI2cNodes(std::uint8_t deviceType) {
    return printTypes(deviceType, [](const IndexNodeInfo&) { return true; });
}

} // namespace zolt
