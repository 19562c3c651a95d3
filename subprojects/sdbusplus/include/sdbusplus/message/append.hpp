// Values into a message under construction: numbers, booleans and texts.
#pragma once

#include "sdbusplus/exception.hpp"
#include "sdbusplus/message/types.hpp"

#include <systemd/sd-bus.h>

#include <string>

namespace sdbusplus::message::details {

inline void appendText(sd_bus_message* message, char code, const char* text) {
    sdbusplus::details::checked(sd_bus_message_append_basic(message, code, text),
                                "sd_bus_message_append_basic string");
}

template <typename Number>
void append(sd_bus_message* message, const Number& number) {
    sdbusplus::details::checked(sd_bus_message_append_basic(message, types::code<Number>, &number),
                                "sd_bus_message_append_basic fundamental");
}

inline void append(sd_bus_message* message, bool truth) {
    const int number = truth ? 1 : 0; // sd-bus takes a boolean as an int
    sdbusplus::details::checked(sd_bus_message_append_basic(message, SD_BUS_TYPE_BOOLEAN, &number),
                                "sd_bus_message_append_basic bool");
}

inline void append(sd_bus_message* message, const char* text) {
    appendText(message, SD_BUS_TYPE_STRING, text);
}

inline void append(sd_bus_message* message, const std::string& text) {
    appendText(message, SD_BUS_TYPE_STRING, text.c_str());
}

inline void append(sd_bus_message* message, const object_path& path) {
    appendText(message, SD_BUS_TYPE_OBJECT_PATH, path.str.c_str());
}

} // namespace sdbusplus::message::details
