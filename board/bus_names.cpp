#include "board/bus_names.h"

#include <systemd/sd-bus.h>

namespace board {

std::string fullPath(const std::string& path) {
    return path.starts_with('/') ? path : std::string(servicePathPrefix) + path;
}

std::string fullInterface(const std::string& interface) {
    return interface.find('.') != std::string::npos ? interface : std::string(serviceInterfacePrefix) + interface;
}

std::string shortPath(const std::string& path) {
    return path.starts_with(servicePathPrefix) && path.size() > servicePathPrefix.size()
               ? path.substr(servicePathPrefix.size())
               : path;
}

std::string_view nameBelow(std::string_view path, std::string_view manager) {
    if (!path.starts_with(manager) || path.size() <= manager.size() ||
        path[manager.size()] != '/') {
        return {};
    }
    const std::string_view name = path.substr(manager.size() + 1);
    return name.contains('/') ? std::string_view() : name;
}

std::string shortInterface(const std::string& interface) {
    const std::string rest = interface.starts_with(serviceInterfacePrefix)
                                 ? interface.substr(serviceInterfacePrefix.size())
                                 : std::string();
    return rest.empty() || rest.contains('.') ? interface : rest;
}

bool isObjectPath(const std::string& text) {
    return sd_bus_object_path_is_valid(text.c_str()) > 0;
}

bool isPropertyName(const std::string& text) {
    // The library lets a digit stand first, the protocol does not.
    return sd_bus_member_name_is_valid(text.c_str()) > 0 && (text[0] < '0' || text[0] > '9');
}

bool isInterfaceName(const std::string& text) {
    return sd_bus_interface_name_is_valid(text.c_str()) > 0;
}

} // namespace board
