// Parts of the replies of D-Bus's standard interfaces.
#pragma once

#include "standin/service/object_tree.h"

#include <systemd/sd-bus.h>

namespace standin {

/// Appends one container. @p addContents fills it and returns sd-bus's result.
template <typename AddContents>
int appendContainer(sd_bus_message* message, char kind, const char* contents,
                    AddContents addContents) {
    int result = sd_bus_message_open_container(message, kind, contents);
    if (result >= 0) {
        result = addContents();
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

/// Appends a property's value as a variant. Returns sd-bus's result, or -EINVAL for a value that
/// does not fit its signature; so do the functions below.
int appendVariant(sd_bus_message* message, const board::Property& property);

/// Appends the entries of an "a{sv}", one for each property.
int appendEntries(sd_bus_message* message, const board::PublishedInterface& interface);

/// Appends an object with its interfaces and properties: one entry of an "a{oa{sa{sv}}}".
int appendObject(sd_bus_message* message, const ObjectNode& node);

} // namespace standin
