#include "bus/back_plane_payload_printer.h"

#include "bus/cem_header_rows.h"

namespace zolt {

namespace {

// The report always shows sixteen endpoints. It ignores NUM_EP_DESCRIPTORS.
constexpr auto backPlaneRows = afterCemHeader(std::to_array<ReportRow>({
    {"EndPoint0", "EndPoint0", PropertyType::endpoint},
    {"EndPoint1", "EndPoint1", PropertyType::endpoint},
    {"EndPoint2", "EndPoint2", PropertyType::endpoint},
    {"EndPoint3", "EndPoint3", PropertyType::endpoint},
    {"EndPoint4", "EndPoint4", PropertyType::endpoint},
    {"EndPoint5", "EndPoint5", PropertyType::endpoint},
    {"EndPoint6", "EndPoint6", PropertyType::endpoint},
    {"EndPoint7", "EndPoint7", PropertyType::endpoint},
    {"EndPoint8", "EndPoint8", PropertyType::endpoint},
    {"EndPoint9", "EndPoint9", PropertyType::endpoint},
    {"EndPoint10", "EndPoint10", PropertyType::endpoint},
    {"EndPoint11", "EndPoint11", PropertyType::endpoint},
    {"EndPoint12", "EndPoint12", PropertyType::endpoint},
    {"EndPoint13", "EndPoint13", PropertyType::endpoint},
    {"EndPoint14", "EndPoint14", PropertyType::endpoint},
    {"EndPoint15", "EndPoint15", PropertyType::endpoint},
    {"checksum", "checksum"},
}));

constexpr Report backPlaneReport{
    .printer = "BackPlanePayloadPrinter", .labelWidth = wideLabel, .rows = backPlaneRows};

} // namespace

void BackPlanePayloadPrinter::print() {
    printReport<backPlaneReport>();
}

} // namespace zolt
