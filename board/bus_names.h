// Names of the system bus in a board description. The bus daemon ends the connection of a service
// that sends a wrong name, so a description with one is refused. The rules are those of D-Bus.
// libsystemd has them, too, but a machine without a system bus can work with a description.
#pragma once

#include <string>
#include <string_view>

namespace board {

constexpr std::string_view servicePathPrefix = "/com/tesk/bmc/zolt/";
constexpr std::string_view serviceInterfacePrefix = "com.tesk.bmc.zolt.";

// Paths and interfaces may be written without the prefix that all of the service's have.
[[nodiscard]] std::string fullPath(const std::string& path);
[[nodiscard]] std::string fullInterface(const std::string& interface);

// The other way round: without the prefix, where the name means the same without it.
[[nodiscard]] std::string shortPath(const std::string& path);
[[nodiscard]] std::string shortInterface(const std::string& interface);

/// The last element of an object's path directly below a manager; empty for any other path.
[[nodiscard]] std::string_view nameBelow(std::string_view path, std::string_view manager);

[[nodiscard]] bool isPathElement(std::string_view text);
[[nodiscard]] bool isObjectPath(std::string_view text);
[[nodiscard]] bool isPropertyName(std::string_view text);

/// Whether the text is the name of an interface or of an error: the same rules hold for both.
[[nodiscard]] bool isInterfaceName(std::string_view text);

} // namespace board
