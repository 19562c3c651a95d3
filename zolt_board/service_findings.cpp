// Findings of the service: whether its objects are the modules in the slots, with the fields of
// their payloads.
#include "board/bus_names.h"
#include "board/message_text.h"
#include "board/published_board.h"
#include "bus/service_names.h"
#include "zolt_board/joined.h"
#include "zolt_board/payload_reading.h"
#include "zolt_board/service_objects.h"
#include "zolt_board/subjects.h"
#include "zolt_board/value_text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zolt_board {

namespace {

using board::Property;

std::string shownPath(const ServiceObject& object) {
    return board::shortened(board::shortPath(object.path));
}

class ObjectCheck {
public:
    ObjectCheck(const ServiceObject& object, const board::Bytes& block, Findings& findings)
        : object_(&object),
          block_(&block),
          place_("object " + shownPath(object)),
          findings_(&findings) {}

    /// @param hasHiddenSlot  an object of no slot may belong to that one
    void check(bool hasHiddenSlot) {
        const SlotReading* const slot = object_->slot;
        if (slot == nullptr && hasHiddenSlot) {
            return;
        }
        if (slot == nullptr || slot->dstat == 0) {
            add(Kind::objectWithoutSlot, place_,
                slot == nullptr ? "no slot has the module of this object"
                                : joined("DSTAT of ", slot->name(), ", its slot, is 0"),
                "a slot with a DSTAT of 1 to 3");
            return;
        }
        const auto payload = payloadOf(*slot);
        if (!payload) {
            return;
        }
        checkClass(*payload);
        if (object_->properties != nullptr) {
            checkProperties(*payload);
        }
    }

private:
    void add(Kind kind, std::string place, std::string what, std::string expected) {
        findings_->push_back({kind, std::move(place), std::move(what), std::move(expected)});
    }

    // The classes with a layout of their own have an interface of their own.
    void checkClass(const PayloadReading& payload) {
        std::string_view interface = "cemCIR";
        if (payload.deviceClass == board::backplaneDeviceClass) {
            interface = "backplaneCIR";
        } else if (payload.deviceClass == board::puckDeviceClass) {
            interface = "puckCIR";
        } else if (payload.deviceClass == board::rfcDeviceClass) {
            interface = "rfcCIR";
        }
        if (interface != object_->type->interface) {
            add(Kind::objectClassDiffers, place_,
                joined("the type ", object_->type->name, " has the interface ",
                       object_->type->interface, ", and the payload of ", payload.slot->name(),
                       " the class ", inHex(payload.deviceClass, 2)),
                joined("a type with the interface ", interface));
        }
    }

    void checkProperties(const PayloadReading& payload) {
        const auto expected = expectedProperties(*object_->type, *payload.slot, *block_);
        if (object_->properties->empty()) {
            add(Kind::propertyMissing, place_, "the object has no properties",
                joined("the ", expected.size(), " properties of ", object_->type->interface));
            return;
        }
        for (const Property& property : expected) {
            const auto shown =
                std::ranges::find(*object_->properties, property.name, &Property::name);
            const std::string place = joined(place_, " property ", property.name);
            if (shown == object_->properties->end()) {
                add(Kind::propertyMissing, place, "the object lacks the property",
                    joined("a property of type ", property.signature));
            } else if (shown->signature != property.signature) {
                add(Kind::propertyTypeDiffers, place, joined("the type is ", shown->signature),
                    property.signature);
            } else if (shown->value != property.value && isTold(property.name, payload)) {
                add(Kind::propertyValueDiffers, place,
                    joined("the value is ", valueText(shown->value)),
                    joined(valueText(property.value), ", as the payload of ", payload.slot->name(),
                           " says"));
            }
        }
    }

    // Whether the payload tells the value of a property. It does not tell what the service shows of
    // end points that the module does not have, and of a checksum that lies outside.
    [[nodiscard]] bool isTold(std::string_view name, const PayloadReading& payload) const {
        const std::size_t size = std::min(payload.statedSize, payload.bytes.size());
        if (name == "checksum") {
            const auto place = payload.checksumPlace();
            return place && *place < size;
        }
        constexpr std::string_view endPoint = "EndPoint";
        if (!name.starts_with(endPoint)) {
            return true;
        }
        std::size_t index = 0;
        for (const char digit : name.substr(endPoint.size())) {
            index = index * 10 + static_cast<std::size_t>(digit - '0');
        }
        return index < payload.endPoints &&
               payload.fieldsEnd + (index + 1) * board::endPointSize < size;
    }

    const ServiceObject* object_;
    const board::Bytes* block_;
    std::string place_;
    Findings* findings_;
};

// Readers ask for two properties as booleans, and for all others as 16-bit numbers.
void checkInfo(const board::ServiceModel& service, Findings& findings) {
    constexpr std::array<std::string_view, 2> flags{"FRUreadComplete", "SlotMappingComplete"};
    if (!isAnswered(service, zolt::infoPath, zolt::infoInterface)) {
        return;
    }
    for (const board::PublishedInterface& published : service.interfaces) {
        if (published.path != zolt::infoPath || published.interface != zolt::infoInterface) {
            continue;
        }
        for (const Property& property : published.properties) {
            const bool isFlag = std::ranges::find(flags, property.name) != flags.end();
            const char* const expected = isFlag ? "b" : "q";
            if (property.signature != expected) {
                findings.push_back({Kind::propertyTypeDiffers,
                                    joined("object info property ", property.name),
                                    joined("the type is ", property.signature), expected});
            }
        }
    }
}

// A slot lacks its object if the service publishes other modules of its class.
void checkMissing(const std::vector<ServiceObject>& objects, const ReaderView& board,
                  Findings& findings) {
    std::array<const ServiceObject*, 0x100> ofClass{};
    std::array<bool, board::slotCount + 1> hasObject{};
    for (const ServiceObject& object : objects) {
        if (object.slot == nullptr) {
            continue;
        }
        hasObject[object.slot->id] = true;
        if (const auto payload = payloadOf(*object.slot)) {
            ofClass[payload->deviceClass] = &object;
        }
    }
    for (const PayloadReading& payload : payloadsOf(board)) {
        const ServiceObject* const other = ofClass[payload.deviceClass];
        if (payload.slot->dstat == discovered && !hasObject[payload.slot->id] && other != nullptr) {
            findings.push_back(
                {Kind::slotWithoutObject, payload.slot->name(),
                 joined("the service has no object of the module, whose class is ",
                        inHex(payload.deviceClass, 2)),
                 joined("an object, like ", shownPath(*other), " of ", other->slot->name())});
        }
    }
}

} // namespace

void checkService(const ReaderView& board, Findings& findings) {
    if (!board.readable().service()) {
        return;
    }
    const board::ServiceModel service = board::publishBoard(board.board());
    checkInfo(service, findings);
    const std::vector<ServiceObject> objects = objectsOf(service, board);
    const board::Bytes block = shownBlock(board);
    const bool hasHiddenSlot = std::ranges::any_of(board.slots(), &SlotReading::isHidden);
    for (const ServiceObject& object : objects) {
        ObjectCheck(object, block, findings).check(hasHiddenSlot);
    }
    checkMissing(objects, board, findings);
}

} // namespace zolt_board
