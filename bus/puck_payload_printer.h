// Printer of puck payloads.
#pragma once

#include "bus/payload_printer.h"

namespace zolt {

/// Prints the properties of the interface "com.tesk.bmc.zolt.puckCIR": nine lines, no endpoints.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class PuckPayloadPrinter final : public PayloadPrinter {
public:
    using PayloadPrinter::PayloadPrinter;
    void print() override;
};

} // namespace zolt
