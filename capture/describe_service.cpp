#include "capture/describe_service.h"

#include "board/bus_names.h"
#include "board/cpld_contents.h"
#include "board/module_codec.h"
#include "board/module_type.h"
#include "board/published_board.h"
#include "board/value_writer.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace capture {

namespace {

using board::DocumentTable;
using board::Property;
using board::shortInterface;

// What an object shows of one interface, by path and interface. A reply of the object itself counts
// more than the reply of its manager.
using Interfaces = std::map<std::pair<std::string, std::string>, std::vector<Property>>;

Interfaces interfacesOf(const ServiceReading& service) {
    Interfaces interfaces;
    for (const ManagerReading& manager : service.managers) {
        for (const board::PublishedInterface& published : manager.interfaces) {
            // Each object has the interfaces of the bus itself, without properties.
            const bool isOfTheBus = published.interface.starts_with("org.freedesktop.DBus.");
            const bool isPlain = published.interface.empty() || isOfTheBus;
            if (!isPlain || !published.properties.empty()) {
                interfaces[{published.path, published.interface}] = published.properties;
            }
        }
    }
    for (const PropertiesReading& object : service.objects) {
        if (!object.error && !object.other) {
            interfaces[{object.path, object.interface}] = object.properties;
        }
    }
    return interfaces;
}

// A payload that no module has is written as bytes, and has no object of its own.
bool isDescribedAsModule(const board::Slot& slot) {
    return board::decodePayload(slot.payload) &&
           (slot.oemArea.empty() || board::decodeOemArea(slot.oemArea));
}

void matchObject(const board::ModuleType& type, std::string_view name,
                 const std::vector<Property>& shown, const board::Bytes& block,
                 board::Board& board) {
    board::Slot* best = nullptr;
    std::size_t most = 0;
    for (board::Slot& slot : board.slots) {
        if (!slot.moduleType.empty() || !isDescribedAsModule(slot)) {
            continue;
        }
        const std::vector<Property> own = board::moduleProperties(type, block, slot);
        const std::size_t shared = board::sharedProperties(own, shown);
        if (shared > most && board::isMost(shared, own)) {
            most = shared;
            best = &slot;
        }
    }
    if (best != nullptr) {
        best->moduleType = type.name;
        best->objectName = name;
    }
}

// Writes properties by name: a service may list them in any order.
void setProperties(std::vector<Property> properties, DocumentTable& table) {
    std::ranges::sort(properties, {}, &Property::name);
    for (const Property& property : properties) {
        table.set(property.name, written(property));
    }
}

// Writes an interface whose properties are not those that the board derives.
void writeObject(const std::pair<std::string, std::string>& place,
                 const std::vector<Property>& shown, const std::vector<Property>* derived,
                 DocumentTable& service) {
    const auto has = [](const std::vector<Property>& properties, const Property& wanted) {
        return std::ranges::find(properties, wanted.name, &Property::name) != properties.end();
    };
    board::WrittenList without;
    std::vector<Property> changed;
    if (derived == nullptr) {
        changed = shown;
    } else {
        for (const Property& property : *derived) {
            if (!has(shown, property)) {
                without.emplace_back(property.name);
            }
        }
        std::ranges::copy_if(shown, std::back_inserter(changed), [&](const Property& property) {
            return std::ranges::find(*derived, property) == derived->end();
        });
        if (without.empty() && changed.empty()) {
            return;
        }
    }
    DocumentTable& object = service.append("object");
    object.set("path", board::shortPath(place.first));
    object.set("interface", shortInterface(place.second));
    if (derived != nullptr && shown.empty()) {
        object.set("empty", true);
    } else if (!without.empty()) {
        object.set("without", std::move(without));
    }
    if (!changed.empty()) {
        setProperties(std::move(changed), object.table("properties"));
    }
}

void writeObjects(const ServiceReading& reading, const board::Board& board,
                  DocumentTable& service) {
    const board::ServiceModel derived = publishBoard(board);
    for (const auto& shown : interfacesOf(reading)) {
        const auto own = std::ranges::find_if(
            derived.interfaces, [&](const board::PublishedInterface& published) {
                return std::pair(published.path, published.interface) == shown.first;
            });
        writeObject(shown.first, shown.second,
                    own == derived.interfaces.end() ? nullptr : &own->properties, service);
    }
}

DocumentTable& appendOrder(const std::string& path, const std::string& interface,
                           DocumentTable& service) {
    DocumentTable& order = service.append("order");
    order.set("path", board::shortPath(path));
    order.set("interface", shortInterface(interface));
    return order;
}

// Writes an order for a call whose answer was no list of properties or of objects.
void writeOrder(const std::string& path, const std::string& interface,
                const std::optional<BusError>& error, const std::optional<OtherReply>& other,
                DocumentTable& service) {
    if (error) {
        DocumentTable& order = appendOrder(path, interface, service);
        order.set("action", "error");
        order.set("error", error->name);
        order.set("text", error->text);
    } else if (other && (other->value || other->signature.empty())) {
        DocumentTable& order = appendOrder(path, interface, service);
        order.set("action", "reply");
        if (other->value) {
            order.set("signature", other->signature);
            order.set("value", written(*other->value));
        }
    }
}

void writeOrders(const ServiceReading& reading, DocumentTable& service) {
    if (reading.info) {
        writeOrder(reading.info->path, reading.info->interface, reading.info->error,
                   reading.info->other, service);
    }
    for (const ManagerReading& manager : reading.managers) {
        writeOrder(manager.path, "org.freedesktop.DBus.ObjectManager", manager.error, manager.other,
                   service);
    }
    for (const PropertiesReading& object : reading.objects) {
        writeOrder(object.path, object.interface, object.error, object.other, service);
    }
}

void writeInfo(const PropertiesReading& info, DocumentTable& service) {
    const std::vector<Property> usual{{"FRUreadComplete", "b", true},
                                      {"SlotMappingComplete", "b", true}};
    std::vector<Property> shown = info.properties;
    std::ranges::sort(shown, {}, &Property::name);
    if (shown != usual) {
        if (shown.empty()) { // an empty table is not written
            DocumentTable& object = service.append("object");
            object.set("path", "info");
            object.set("interface", "pcardInfo");
            object.set("empty", true);
            return;
        }
        setProperties(std::move(shown), service.table("info"));
    }
}

} // namespace

void matchObjects(const ServiceReading& service, board::Board& board) {
    const board::Bytes block = payloadBlock(board);
    const Interfaces interfaces = interfacesOf(service);
    for (const board::ModuleType& type : board::moduleTypes) {
        const std::string manager = std::string(board::servicePathPrefix).append(type.name);
        const std::string interface =
            std::string(board::serviceInterfacePrefix).append(type.interface);
        for (const auto& [place, properties] : interfaces) {
            const std::string_view name = board::nameBelow(place.first, manager);
            if (!name.empty() && place.second == interface) {
                matchObject(type, name, properties, block, board);
            }
        }
    }
}

void writeService(const ServiceReading& service, const board::Board& board, DocumentTable& root) {
    if (service.reach != ServiceReading::Reach::service) {
        return;
    }
    DocumentTable& table = root.table("service");
    if (service.info && !service.info->error && !service.info->other) {
        writeInfo(*service.info, table);
    }
    writeObjects(service, board, table);
    writeOrders(service, table);
}

} // namespace capture
