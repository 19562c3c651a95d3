#include "bus/rfc_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

namespace {

constexpr Report report{
    .printer = "RFCPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows};

} // namespace

void RFCPayloadPrinter::print() {
    printReport<report>();
}

} // namespace zolt
