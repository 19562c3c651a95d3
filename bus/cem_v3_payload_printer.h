// Printer of CEM v3 payloads: those of risers, storage carriers, batteries and all other modules
// without a printer of their own.
#pragma once

#include "bus/payload_printer.h"

namespace zolt {

/// Prints the properties of the interface "com.tesk.bmc.zolt.cemCIR": 31 lines, the first endpoint
/// decoded, three more as bytes.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class CEMV3PayloadPrinter final : public PayloadPrinter {
public:
    using PayloadPrinter::PayloadPrinter;
    void print() override;
};

} // namespace zolt
