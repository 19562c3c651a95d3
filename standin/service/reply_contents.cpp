#include "standin/service/reply_contents.h"

#include "standin/service/value_message.h"

#include <string>

namespace standin {

namespace {

int appendText(sd_bus_message* message, char code, const std::string& text) {
    return sd_bus_message_append_basic(message, code, text.c_str());
}

int appendEntry(sd_bus_message* message, const board::Property& property) {
    return appendContainer(message, 'e', "sv", [&] {
        const int result = appendText(message, 's', property.name);
        return result < 0 ? result : appendVariant(message, property);
    });
}

int appendInterface(sd_bus_message* message, const board::PublishedInterface& interface) {
    return appendContainer(message, 'e', "sa{sv}", [&] {
        const int result = appendText(message, 's', interface.interface);
        return result < 0 ? result : appendContainer(message, 'a', "{sv}", [&] {
            return appendEntries(message, interface);
        });
    });
}

int appendInterfaces(sd_bus_message* message, const ObjectNode& node) {
    return appendContainer(message, 'a', "{sa{sv}}", [&] {
        int result = 0;
        for (const board::PublishedInterface* interface : node.interfaces) {
            if (result >= 0) {
                result = appendInterface(message, *interface);
            }
        }
        return result;
    });
}

} // namespace

int appendVariant(sd_bus_message* message, const board::Property& property) {
    return appendContainer(message, 'v', property.signature.c_str(), [&] {
        return appendValue(message, property.signature, property.value);
    });
}

int appendEntries(sd_bus_message* message, const board::PublishedInterface& interface) {
    int result = 0;
    for (const board::Property& property : interface.properties) {
        if (result >= 0) {
            result = appendEntry(message, property);
        }
    }
    return result;
}

int appendObject(sd_bus_message* message, const ObjectNode& node) {
    return appendContainer(message, 'e', "oa{sa{sv}}", [&] {
        const int result = appendText(message, 'o', node.path);
        return result < 0 ? result : appendInterfaces(message, node);
    });
}

} // namespace standin
