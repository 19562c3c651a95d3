#include "bus/all_properties.h"

#include "bus/back_plane_payload_printer.h"
#include "bus/cem_v3_payload_printer.h"
#include "bus/puck_payload_printer.h"
#include "bus/rfc_payload_printer.h"
#include "bus/service_client.h"
#include "console/output.h"

#include <exception>
#include <iterator>
#include <string_view>
#include <utility>

namespace zolt {

namespace {

using Print = void (*)(PropertyMap properties);

template <typename Printer>
void printWith(PropertyMap properties) {
    Printer(std::move(properties)).print();
}

// The views by module class, from class 0 on. All other classes carry a CEM payload.
constexpr Print views[] = {
    printWith<BackPlanePayloadPrinter>,
    printWith<PuckPayloadPrinter>,
    printWith<RFCPayloadPrinter>,
};

} // namespace

void PrintAllProperties(sdbusplus::bus_t& bus, std::uint8_t moduleClass,
                        const std::string& objectPath) {
    const Print print =
        moduleClass < std::size(views) ? views[moduleClass] : printWith<CEMV3PayloadPrinter>;
    try {
        print(getAllProperties(bus, zoltService, objectPath, cirInterface(moduleClass)));
        write("\n");
        flush();
    } catch (const std::exception& error) {
        zolt::print<"PrintAllProperties: catch error: %s\n">(std::string_view(error.what()));
    }
}

} // namespace zolt
