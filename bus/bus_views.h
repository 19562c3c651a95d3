// The views of what the service publishes, behind one door.
//
// They live in a library of their own, which is loaded when an option asks the bus for the first
// time: the bus's libraries cost more to load than a report of registers takes.
//
// The library prints through the console of the program that loads it.
#pragma once

#include <cstdint>

namespace zolt {

/// What the library offers, as the object zoltBusViews. Each view connects to the system bus
/// anew: a bus that came back serves the next run. They judge themselves; what they throw is what
/// the standard library throws.
struct BusViews {
    void (*showInfoProperties)();
    void (*showCirProperties)(std::uint8_t moduleType); ///< 1 (backplane) to 11 (battery)
};

constexpr const char* busViewsLibrary = "zolt_bus_views.so"; ///< beside the tool
constexpr const char* busViewsObject = "zoltBusViews";

} // namespace zolt
