// The module types of the service, and how the service publishes their payloads.
#pragma once

#include <cstddef>
#include <string_view>

namespace board {

// Where a payload's end points start, and how many the service publishes, present or not.
struct EndPoints {
    std::size_t start;
    std::size_t count;
};

constexpr EndPoints noEndPoints{0, 0};
constexpr EndPoints cardEndPoints{13, 4};
constexpr EndPoints backplaneEndPoints{20, 16}; // behind the backplane descriptor

// A module type: `name` is the last element of the manager's path.
struct ModuleType {
    std::string_view name;
    std::string_view interface;
    EndPoints endPoints;
    // Property names that differ between the types.
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

} // namespace board
