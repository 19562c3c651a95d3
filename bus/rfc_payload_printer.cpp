#include "bus/rfc_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

void RFCPayloadPrinter::print() {
    printReport({.printer = "RFCPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows});
}

} // namespace zolt
