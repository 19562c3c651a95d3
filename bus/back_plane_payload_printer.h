// Printer of backplane payloads.
#pragma once

#include "bus/payload_printer.h"

namespace zolt {

/// Prints the properties of the interface "com.tesk.bmc.zolt.backplaneCIR": 28 lines, all sixteen
/// endpoints as bytes.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class BackPlanePayloadPrinter final : public PayloadPrinter {
public:
    using PayloadPrinter::PayloadPrinter;
    void print() override;
};

} // namespace zolt
