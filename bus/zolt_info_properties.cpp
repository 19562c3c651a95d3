#include "bus/zolt_info_properties.h"

#include "bus/service_client.h"
#include "console/output.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <iterator>
#include <string_view>
#include <variant>

namespace zolt {

namespace {

constexpr std::string_view flags[] = {"FRUreadComplete", "SlotMappingComplete"};

// The property's name alone decides which type the value must have.
int valueOf(std::string_view name, const PropertyValue& value) {
    return std::ranges::find(flags, name) != std::end(flags) ? int{std::get<bool>(value)}
                                                             : std::get<std::uint16_t>(value);
}

void printProperties(const PropertyMap& properties) {
    write("PrintZoltInfoProperties: \n");
    for (const auto& [name, value] : properties) {
        print<"Property Name  = %s\n">(std::string_view(name));
        write("Property Value = "); // stays when the value has the wrong type
        print<"%d\n">(valueOf(name, value));
    }
}

} // namespace

void PrintZoltInfoProperties(sdbusplus::bus_t& bus) {
    try {
        printProperties(getAllProperties(bus, zoltService, infoPath, infoInterface));
    } catch (const std::exception& error) {
        print<"PrintZoltInfoProperties: catch error: %s\n">(std::string_view(error.what()));
    }
    write("\n");
    flush();
}

} // namespace zolt
