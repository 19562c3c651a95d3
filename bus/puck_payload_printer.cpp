#include "bus/puck_payload_printer.h"

#include "bus/short_rows.h"

namespace zolt {

void PuckPayloadPrinter::print() {
    static constexpr Report report{
        .printer = "PuckPayloadPrinter", .labelWidth = narrowLabel, .rows = shortRows};
    static_assert(fits(report));
    printReport(report);
}

} // namespace zolt
