#include "board/published_board.h"

#include "board/cpld_contents.h"
#include "board/module_layout.h"
#include "board/module_type.h"
#include "board/service_description.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <span>
#include <string>
#include <utility>

namespace board {

namespace {

// A module's payload, read by offset from its first byte.
class PayloadView {
public:
    PayloadView(const Bytes& block, const Slot& slot)
        : bytes_(std::span(block).subspan(payloadIndexOfOffset0 + slot.payloadOffset)),
          size_(slot.payload.size()) {}

    [[nodiscard]] int byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : 0; }
    [[nodiscard]] int bigEndian(std::size_t at) const { return byte(at) << 8 | byte(at + 1); }

    // The last byte by the payload's own length, even beyond the payload; 0 when the length is 0.
    [[nodiscard]] int checksum() const {
        switch (byte(1)) {
        case puckDeviceClass:
        case rfcDeviceClass:
            return byte(headerOnlySize - 1);
        default:
            return byte(2) == 0 ? 0 : byte(payloadSizeUnit * static_cast<std::size_t>(byte(2)) - 1);
        }
    }

    // An end point that does not end before the payload's last byte is missing: all zeros.
    [[nodiscard]] Value endPoint(std::size_t at) const {
        Value::List bytes(endPointSize, Value(0));
        if (at + endPointSize < size_) {
            std::ranges::transform(bytes_.subspan(at, endPointSize), bytes.begin(),
                                   [](std::uint8_t value) { return Value(int{value}); });
        }
        return bytes;
    }

private:
    static constexpr std::size_t headerOnlySize = 2 * payloadSizeUnit;

    std::span<const std::uint8_t> bytes_; // to the end of the payload block
    std::size_t size_;
};

std::vector<Property> propertiesOf(const ModuleType& type, const PayloadView& payload) {
    std::vector<Property> properties{
        {"PayloadFrmtVer", "y", payload.byte(0)},    {"DeviceClass", "y", payload.byte(1)},
        {"StaticPaylodSize", "y", payload.byte(2)},  {"DeviceId", "q", payload.bigEndian(4)},
        {"VendorId", "q", payload.bigEndian(6)},     {"DeviceVer", "y", payload.byte(8)},
        {type.wires, "y", payload.byte(10)},         {type.targetType, "y", payload.byte(11)},
        {type.targetAddress, "y", payload.byte(12)},
    };
    const auto [start, count] = type.endPoints;
    for (std::size_t i = 0; i < count; ++i) {
        properties.push_back({"EndPoint" + std::to_string(i), "(yyyyyy)",
                              payload.endPoint(start + endPointSize * i)});
    }
    properties.push_back({"checksum", "y", payload.checksum()});
    return properties;
}

void publishModules(const Board& board, ServiceModel& model) {
    const Bytes block = payloadBlock(board);
    for (const ModuleType& type : moduleTypes) {
        const std::string manager = std::string(servicePathPrefix).append(type.name);
        model.managers.push_back(manager);
        for (const Slot& slot : board.slots) {
            if (slot.moduleType == type.name) {
                model.interfaces.push_back(
                    {manager + "/" + slot.objectName,
                     std::string(serviceInterfacePrefix).append(type.interface),
                     moduleProperties(type, block, slot)});
            }
        }
    }
}

// Changes the interfaces of a service. A board may have thousands, so each is found by its name.
class Changes {
public:
    explicit Changes(ServiceModel& model) : model_(&model) {
        for (std::size_t i = 0; i < model.interfaces.size(); ++i) {
            places_.try_emplace(nameOf(model.interfaces[i]), i);
        }
    }

    void remove(const PublishedInterface& removal) {
        const auto place = places_.find(nameOf(removal));
        if (place != places_.end()) {
            std::erase_if(model_->interfaces[place->second].properties,
                          [&](const Property& property) {
                              return removal.properties.empty() ||
                                     std::ranges::find(removal.properties, property.name,
                                                       &Property::name) != removal.properties.end();
                          });
        }
    }

    void add(const PublishedInterface& addition) {
        const auto [place, isNew] =
            places_.try_emplace(nameOf(addition), model_->interfaces.size());
        if (isNew) {
            model_->interfaces.push_back(addition);
            return;
        }
        PublishedInterface& published = model_->interfaces[place->second];
        for (const Property& property : addition.properties) {
            const auto same =
                std::ranges::find(published.properties, property.name, &Property::name);
            if (same == published.properties.end()) {
                published.properties.push_back(property);
            } else {
                *same = property;
            }
        }
    }

private:
    using Name = std::pair<std::string, std::string>; // path and interface

    static Name nameOf(const PublishedInterface& interface) {
        return {interface.path, interface.interface};
    }

    ServiceModel* model_;
    std::map<Name, std::size_t> places_;
};

std::chrono::milliseconds delayOf(const FaultRule& fault) {
    return fault.delay == delayForever ? ServiceOrder::forever
                                       : std::chrono::milliseconds(fault.delay);
}

// Orders of faults go to the front, the last fault first, because the first order that is due
// applies.
void addFaults(const Board& board, ServiceModel& model) {
    using Action = ServiceOrder::Action;
    for (const FaultRule& fault : board.faults) {
        if (fault.kind == FaultKind::object) {
            const std::string& path = fault.subject;
            model.orders.insert(
                model.orders.begin(),
                {.path = path.starts_with('/') ? path : std::string(servicePathPrefix) + path,
                 .after = static_cast<int>(fault.after),
                 .times = static_cast<int>(fault.times),
                 .delay = delayOf(fault),
                 .action = fault.status == 0 ? Action::answer : Action::error,
                 .name = fault.error.empty() ? "org.freedesktop.DBus.Error.Failed" : fault.error,
                 .text = "ordered by a fault"});
        }
    }
}

} // namespace

std::vector<Property> moduleProperties(const ModuleType& type, const Bytes& block,
                                       const Slot& slot) {
    return propertiesOf(type, PayloadView(block, slot));
}

std::size_t sharedProperties(const std::vector<Property>& own, const std::vector<Property>& shown) {
    return static_cast<std::size_t>(std::ranges::count_if(own, [&](const Property& property) {
        return std::ranges::find(shown, property) != shown.end();
    }));
}

ServiceModel publishBoard(const Board& board) {
    ServiceModel model;
    model.interfaces.push_back({std::string(servicePathPrefix) + "info",
                                std::string(serviceInterfacePrefix) + "pcardInfo",
                                board.service.info});
    publishModules(board, model);
    Changes changes(model);
    for (const PublishedInterface& removal : board.service.removals) {
        changes.remove(removal);
    }
    for (const PublishedInterface& addition : board.service.additions) {
        changes.add(addition);
    }
    model.orders = board.service.orders;
    addFaults(board, model);
    return model;
}

} // namespace board
