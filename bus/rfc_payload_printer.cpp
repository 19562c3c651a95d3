#include "bus/rfc_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

void RFCPayloadPrinter::print() {
    static constexpr Report report{
        .printer = "RFCPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows};
    static_assert(fits(report));
    printReport(report);
}

} // namespace zolt
