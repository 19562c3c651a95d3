// The types of modules as the service sorts them, and how it shows their payloads.
#pragma once

#include <cstddef>
#include <string_view>

namespace standin {

constexpr std::size_t endPointSize = 6; ///< bytes of an end point descriptor

// Where the service finds the end points of a payload, and how many it publishes, present or not.
struct EndPoints {
    std::size_t start;
    std::size_t count;
};

constexpr EndPoints noEndPoints{0, 0};
constexpr EndPoints cardEndPoints{13, 4};
constexpr EndPoints backplaneEndPoints{20, 16}; // behind the backplane descriptor

// A type of module: last element of its manager's path, and how the service shows its payloads.
struct ModuleType {
    std::string_view name;
    std::string_view interface;
    EndPoints endPoints;
    // Properties that are not called the same for all types.
    const char* wires;
    const char* targetType;
    const char* targetAddress;
};

constexpr ModuleType shortType(std::string_view name, std::string_view interface) {
    return {
        name, interface, noEndPoints, "NumPwires", "TargetI2cGpioDevType", "TargetI2cGpioDevAddr"};
}
constexpr ModuleType longType(std::string_view name, std::string_view interface,
                              EndPoints endPoints) {
    return {name, interface, endPoints, "NumWires", "TargetI2cDevType", "TargetI2cDevAddr"};
}
constexpr ModuleType cardType(std::string_view name) {
    return longType(name, "cemCIR", cardEndPoints);
}

constexpr ModuleType moduleTypes[] = {
    longType("bp", "backplaneCIR", backplaneEndPoints),
    shortType("puck", "puckCIR"),
    shortType("rfc", "rfcCIR"),
    cardType("riser"),
    cardType("ftulm"),
    cardType("karnRaid"),
    cardType("karnNonRaid"),
    cardType("rida"),
    cardType("flop"),
    cardType("bi"),
    cardType("battery"),
};

} // namespace standin
