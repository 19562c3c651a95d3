// Prints both displays of a CIR payload, for any fetched bytes.
#include "payload/cir_payload.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zolt::PayloadBuffer fetched(data, data + size);
    zolt::printCirPayload(fetched, 0, 1);
    zolt::printCirPayload(fetched, 0, 2);
    return 0;
}
