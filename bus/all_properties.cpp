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

struct CirView {
    const char* interface;
    void (*print)(PropertyMap properties);
};

template <typename Printer>
void printWith(PropertyMap properties) {
    Printer(std::move(properties)).print();
}

// The views by module class, from class 0 on.
constexpr CirView views[] = {
    {"com.tesk.bmc.zolt.backplaneCIR", printWith<BackPlanePayloadPrinter>},
    {"com.tesk.bmc.zolt.puckCIR", printWith<PuckPayloadPrinter>},
    {"com.tesk.bmc.zolt.rfcCIR", printWith<RFCPayloadPrinter>},
};

// The view of all other classes, which carry a CEM payload.
constexpr CirView cemView{"com.tesk.bmc.zolt.cemCIR", printWith<CEMV3PayloadPrinter>};

} // namespace

void PrintAllProperties(sdbusplus::bus_t& bus, std::uint8_t moduleClass,
                        const std::string& objectPath) {
    const CirView& view = moduleClass < std::size(views) ? views[moduleClass] : cemView;
    try {
        view.print(getAllProperties(bus, zoltService, objectPath, view.interface));
        write("\n");
        flush();
    } catch (const std::exception& error) {
        print<"PrintAllProperties: catch error: %s\n">(std::string_view(error.what()));
    }
}

} // namespace zolt
