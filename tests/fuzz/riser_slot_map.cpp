// Prints the readable display of the riser slot mapping blob, for any fetched bytes. The dump takes
// no decisions that a fuzzer could explore.
#include "payload/riser_slot_map.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> blob(data, data + size);
    zolt::printRiserSlotMap(blob, static_cast<std::uint32_t>(size), 2);
    return 0;
}
