// Looks for the OEM area in any fetched bytes, and prints both of its displays.
#include "payload/oem_area.h"
#include "payload/oem_area_decoder.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto found = zolt::findOemArea({data, size});
    const zolt::PayloadBuffer area(found.begin(), found.end());
    zolt::printOemArea(area, 0, 0, 1);
    zolt::printOemArea(area, 0, 0, 2);
    return 0;
}
