#include "standin/service/call_text.h"

#include "standin/log/quoted.h"

#include <cstdint>
#include <string_view>

namespace standin {

namespace {

constexpr std::size_t longestName = 255;

std::string textOf(std::string_view text) {
    const std::string_view start = text.substr(0, longestName);
    return quoted({reinterpret_cast<const std::uint8_t*>(start.data()), start.size()})
        .append(start.size() < text.size() ? "..." : "");
}

} // namespace

std::string callText(sd_bus_message* call, std::span<const char* const> labels) {
    std::string text = std::string(sd_bus_message_get_path(call)).append(" ");
    if (const char* const interface = sd_bus_message_get_interface(call)) {
        text.append(interface).append(".");
    }
    text.append(sd_bus_message_get_member(call));
    (void)sd_bus_message_rewind(call, 1);
    for (const char* const label : labels) {
        const char* value = nullptr;
        if (sd_bus_message_read_basic(call, 's', static_cast<void*>(&value)) <= 0) {
            break; // the caller gave another type, or fewer arguments
        }
        text.append(" ").append(label).append("=").append(textOf(value));
    }
    (void)sd_bus_message_rewind(call, 1);
    return text;
}

std::string answerText(sd_bus_message* answer) {
    if (const sd_bus_error* const error = sd_bus_message_get_error(answer)) {
        return error->name;
    }
    std::string text = sd_bus_message_get_signature(answer, 1);
    (void)sd_bus_message_rewind(answer, 1);
    char kind = 0;
    const char* contents = nullptr;
    if (text == "v" && sd_bus_message_peek_type(answer, &kind, &contents) > 0) {
        text.append(" ").append(contents);
    }
    return text.empty() ? "empty" : text;
}

} // namespace standin
