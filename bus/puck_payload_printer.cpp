#include "bus/puck_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

void PuckPayloadPrinter::print() {
    printReport({.printer = "PuckPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows});
}

} // namespace zolt
