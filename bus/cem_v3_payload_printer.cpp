#include "bus/cem_v3_payload_printer.h"

#include "bus/cem_header_rows.h"

namespace zolt {

namespace {

// The fields of an endpoint. Bit 4 of bytes 1 and 2 and bits 3 and 7 of bytes 4 and 5 are reserved.
// INDIRECT does not change which fields are shown.
constexpr EndpointField endpointFields[] = {
    {.label = "USB_HUB_PRES",
     .byte = 0,
     .bits = {0, 0},
     .style = FieldStyle::sentence,
     .ifSet = "(Hub) USB goes through a USB Hub to get to this endpoint.",
     .ifClear = "(no Hub) USB is directly wired from DSL to endpoint."},
    {.label = "HOT_PLUG",
     .byte = 0,
     .bits = {1, 1},
     .style = FieldStyle::sentence,
     .ifSet = "Notify BIOS that this endpoint is hotplug-capable. Applicable to NVME direct attach "
              "storage or similar EP.",
     .ifClear = "Endpoint is not hotplug-capable."},
    {.label = "INDIRECT",
     .byte = 0,
     .bits = {2, 2},
     .style = FieldStyle::sentence,
     .ifSet = "PCIe switch case: EP PCIe lane comes from a PCIe switch.",
     .ifClear = "normal riser case: EP PCIe lane routing is directly from DSLs."},
    {.label = "I2C_MUX_PRES",
     .byte = 0,
     .bits = {3, 3},
     .style = FieldStyle::sentence,
     .ifSet = "(mux) I2C goes through a mux to get to this endpoint.",
     .ifClear = "(no mux) I2C is directly wired from DSL to endpoint."},
    {.label = "PICPWR_INDEX", .byte = 0, .bits = {7, 4}},
    {.label = "EP_I2C_SOURCE", .byte = 1, .bits = {3, 0}},
    {.label = "EP_TYPE", .byte = 1, .bits = {7, 5}},
    {.label = "I2C_MUX_DCH", .byte = 2, .bits = {3, 0}, .style = FieldStyle::decimal},
    {.label = "EP_LANE_WIDTH", .byte = 2, .bits = {7, 5}},
    {.label = "EP_USB_SOURCE", .byte = 3, .bits = {3, 0}},
    {.label = "USB_HUB_DCH", .byte = 3, .bits = {7, 4}, .style = FieldStyle::decimal},
    {.label = "DSL_LANE_OFFSET_LOWER", .byte = 4, .bits = {2, 0}},
    {.label = "DSL_INDEX_LOWER", .byte = 4, .bits = {6, 4}},
    {.label = "DSL_LANE_OFFSET_UPPER", .byte = 5, .bits = {2, 0}},
    {.label = "DSL_INDEX_UPPER", .byte = 5, .bits = {6, 4}},
};

// The report always shows four endpoints. It ignores NUM_EP_DESCRIPTORS.
constexpr auto cemV3Rows = afterCemHeader(std::to_array<ReportRow>({
    {"EndPoint0", "EndPoint0", PropertyType::endpoint, {}, endpointFields},
    {"EndPoint1", "EndPoint1", PropertyType::endpoint},
    {"EndPoint2", "EndPoint2", PropertyType::endpoint},
    {"EndPoint3", "EndPoint3", PropertyType::endpoint},
    {"checksum", "checksum"},
}));

constexpr Report cemV3Report{
    .printer = "CEMV3PayloadPrinter", .labelWidth = wideLabel, .rows = cemV3Rows};

} // namespace

void CEMV3PayloadPrinter::print() {
    printReport<cemV3Report>();
}

} // namespace zolt
