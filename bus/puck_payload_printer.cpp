#include "bus/puck_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

namespace {

constexpr Report puckReport{
    .printer = "PuckPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows};

} // namespace

void PuckPayloadPrinter::print() {
    printReport<puckReport>();
}

} // namespace zolt
