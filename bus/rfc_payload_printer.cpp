#include "bus/rfc_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

namespace {

constexpr Report rfcReport{
    .printer = "RFCPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows};

} // namespace

void RFCPayloadPrinter::print() {
    printReport<rfcReport>();
}

} // namespace zolt
