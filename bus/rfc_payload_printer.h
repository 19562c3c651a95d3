// Printer of RFC payloads.
#pragma once

#include "bus/payload_printer.h"

namespace zolt {

/// Prints the properties of the interface "com.tesk.bmc.zolt.rfcCIR": nine lines, no endpoints.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class RFCPayloadPrinter final : public PayloadPrinter {
public:
    using PayloadPrinter::PayloadPrinter;
    void print() override;
};

} // namespace zolt
