#include "board/bus_names.h"

#include <cstddef>

namespace board {

namespace {

constexpr std::size_t longestName = 255;
constexpr std::size_t longestPath = 65536;

constexpr std::string_view nameCharacters =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";

bool isName(std::string_view text) {
    return isPathElement(text) && (text[0] < '0' || text[0] > '9');
}

// Whether each of the elements between the separators is a right one.
template <typename IsRight>
bool areElements(std::string_view text, char separator, IsRight isRight) {
    std::size_t end = text.find(separator);
    while (end != std::string_view::npos && isRight(text.substr(0, end))) {
        text.remove_prefix(end + 1);
        end = text.find(separator);
    }
    return end == std::string_view::npos && isRight(text);
}

} // namespace

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

bool isPathElement(std::string_view text) {
    return !text.empty() && text.find_first_not_of(nameCharacters) == std::string_view::npos;
}

bool isObjectPath(std::string_view text) {
    return text == "/" || (text.starts_with('/') && text.size() <= longestPath &&
                           areElements(text.substr(1), '/', isPathElement));
}

bool isPropertyName(std::string_view text) {
    return text.size() <= longestName && isName(text);
}

bool isInterfaceName(std::string_view text) {
    return text.size() <= longestName && text.contains('.') && areElements(text, '.', isName);
}

} // namespace board
