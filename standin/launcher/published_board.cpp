#include "standin/launcher/published_board.h"

#include "board/cpld_contents.h"
#include "board/module_layout.h"
#include "board/module_type.h"
#include "board/service_description.h"

#include <algorithm>
#include <array>
#include <span>

namespace standin {

namespace {

// A module's payload, read by offset from its first byte.
class PayloadView {
public:
    PayloadView(const board::Bytes& block, const board::Slot& slot)
        : bytes_(std::span(block).subspan(board::payloadIndexOfOffset0 + slot.payloadOffset)),
          size_(slot.payload.size()) {}

    [[nodiscard]] int byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : 0; }
    [[nodiscard]] int bigEndian(std::size_t at) const { return byte(at) << 8 | byte(at + 1); }

    // The last byte by the payload's own length, even beyond the payload; 0 when the length is 0.
    [[nodiscard]] int checksum() const {
        switch (byte(1)) {
        case board::puckDeviceClass:
        case board::rfcDeviceClass:
            return byte(headerOnlySize - 1);
        default:
            return byte(2) == 0
                       ? 0
                       : byte(board::payloadSizeUnit * static_cast<std::size_t>(byte(2)) - 1);
        }
    }

    // An end point that does not end before the payload's last byte is missing: all zeros.
    [[nodiscard]] board::Value endPoint(std::size_t at) const {
        board::Value::List bytes(board::endPointSize, board::Value(0));
        if (at + board::endPointSize < size_) {
            std::ranges::transform(bytes_.subspan(at, board::endPointSize), bytes.begin(),
                                   [](std::uint8_t value) { return board::Value(int{value}); });
        }
        return bytes;
    }

private:
    static constexpr std::size_t headerOnlySize = 2 * board::payloadSizeUnit;

    std::span<const std::uint8_t> bytes_; // to the end of the payload block
    std::size_t size_;
};

std::vector<board::Property> propertiesOf(const board::ModuleType& type,
                                          const PayloadView& payload) {
    std::vector<board::Property> properties{
        {"PayloadFrmtVer", "y", payload.byte(0)},    {"DeviceClass", "y", payload.byte(1)},
        {"StaticPaylodSize", "y", payload.byte(2)},  {"DeviceId", "q", payload.bigEndian(4)},
        {"VendorId", "q", payload.bigEndian(6)},     {"DeviceVer", "y", payload.byte(8)},
        {type.wires, "y", payload.byte(10)},         {type.targetType, "y", payload.byte(11)},
        {type.targetAddress, "y", payload.byte(12)},
    };
    const auto [start, count] = type.endPoints;
    for (std::size_t i = 0; i < count; ++i) {
        properties.push_back({"EndPoint" + std::to_string(i), "(yyyyyy)",
                              payload.endPoint(start + board::endPointSize * i)});
    }
    properties.push_back({"checksum", "y", payload.checksum()});
    return properties;
}

void publishModules(const board::Board& board, board::ServiceModel& model) {
    const board::Bytes block = payloadBlock(board);
    for (const board::ModuleType& type : board::moduleTypes) {
        const std::string manager = std::string(board::servicePathPrefix).append(type.name);
        model.managers.push_back(manager);
        for (const board::Slot& slot : board.slots) {
            if (slot.moduleType == type.name) {
                model.interfaces.push_back(
                    {manager + "/" + slot.objectName,
                     std::string(board::serviceInterfacePrefix).append(type.interface),
                     propertiesOf(type, PayloadView(block, slot))});
            }
        }
    }
}

board::PublishedInterface* findInterface(board::ServiceModel& model,
                                         const board::PublishedInterface& like) {
    const auto found =
        std::ranges::find_if(model.interfaces, [&](const board::PublishedInterface& published) {
            return published.path == like.path && published.interface == like.interface;
        });
    return found == model.interfaces.end() ? nullptr : &*found;
}

void remove(const board::PublishedInterface& removal, board::ServiceModel& model) {
    if (board::PublishedInterface* const published = findInterface(model, removal)) {
        std::erase_if(published->properties, [&](const board::Property& property) {
            return removal.properties.empty() ||
                   std::ranges::find(removal.properties, property.name, &board::Property::name) !=
                       removal.properties.end();
        });
    }
}

void add(const board::PublishedInterface& addition, board::ServiceModel& model) {
    board::PublishedInterface* const published = findInterface(model, addition);
    if (published == nullptr) {
        model.interfaces.push_back(addition);
        return;
    }
    for (const board::Property& property : addition.properties) {
        const auto same =
            std::ranges::find(published->properties, property.name, &board::Property::name);
        if (same == published->properties.end()) {
            published->properties.push_back(property);
        } else {
            *same = property;
        }
    }
}

// Orders of faults go to the front, because the first order that fits a call holds.
void addFaults(const board::Board& board, board::ServiceModel& model) {
    for (const board::FaultRule& fault : board.faults) {
        if (fault.kind == board::FaultKind::object) {
            const std::string& path = fault.subject;
            model.orders.insert(
                model.orders.begin(),
                {.path =
                     path.starts_with('/') ? path : std::string(board::servicePathPrefix) + path,
                 .action = board::ServiceOrder::Action::error,
                 .name = fault.error.empty() ? "org.freedesktop.DBus.Error.Failed" : fault.error,
                 .text = "ordered by a fault"});
        }
    }
}

} // namespace

board::ServiceModel publishBoard(const board::Board& board) {
    board::ServiceModel model;
    model.interfaces.push_back({std::string(board::servicePathPrefix) + "info",
                                std::string(board::serviceInterfacePrefix) + "pcardInfo",
                                board.service.info});
    publishModules(board, model);
    for (const board::PublishedInterface& removal : board.service.removals) {
        remove(removal, model);
    }
    for (const board::PublishedInterface& addition : board.service.additions) {
        add(addition, model);
    }
    model.orders = board.service.orders;
    addFaults(board, model);
    return model;
}

} // namespace standin
