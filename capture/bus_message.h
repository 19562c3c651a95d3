// Reads messages of the system bus, whatever the types of the values in them.
#pragma once

#include "capture/observation.h"

#include <cstddef>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace capture {

/// The values and text that a capture still keeps. A value in another value counts by itself.
struct BusRoom {
    std::size_t values = 131'072;
    std::size_t textBytes = 2UL * 1024 * 1024;
};

/// Properties of one reply that a capture names because it cannot keep them.
constexpr std::size_t mostUnkept = 256;

/// Containers in each other that a board description can hold.
constexpr unsigned deepestValue = 32;

// The functions below read at the message's read position, and go on to the position behind. They
// return 0, or the negative errno of a message that sd-bus cannot read.

/// Reads a dictionary "a{sv}" of properties. Properties that cannot be kept are added to @p unkept,
/// with this path and interface.
int readPropertyMap(sd_bus_message* message, const std::string& path, const std::string& interface,
                    BusRoom& room, std::vector<board::Property>& properties,
                    std::vector<UnkeptProperty>& unkept);

/// Reads a dictionary "a{oa{sa{sv}}}" of objects.
int readObjects(sd_bus_message* message, BusRoom& room, ManagerReading& reading);

/// Reads the whole contents of a message of any signature. Expects the read position at the start.
int readContents(sd_bus_message* message, BusRoom& room, OtherReply& contents);

} // namespace capture
