// The stand-in's CPLD driver library: reads the board's raw registers.
#include "platform/cpld_driver.h"

#include "standin/image/image_reader.h"
#include "standin/lib/call_end.h"
#include "standin/lib/log_file.h"
#include "standin/lib/status.h"

#include <algorithm>
#include <optional>

namespace {

using standin::badArgument;
using standin::noBoard;

// The register of an address. An address has 16 bits, or 16 bits that are sign-extended to 32.
std::optional<std::uint32_t> registerAt(std::uint32_t address) {
    const std::uint32_t upper = address >> 16;
    if (upper != 0 && (upper != 0xFFFF || (address & 0x8000) == 0)) {
        return std::nullopt;
    }
    return address & 0xFFFF;
}

std::int32_t readRegisters(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    const auto* image = standin::ImageReader::attached();
    if (image == nullptr) {
        return noBoard;
    }
    const auto first = registerAt(address);
    if (!first || length == 0 || length > board::rawAddressCount - *first) {
        return badArgument;
    }
    if (const auto status = standin::awaitEnd(image->endOfRawRead(*first, length)); status != 0) {
        return status;
    }
    std::ranges::copy(image->raw(*first, length), buffer);
    return 0;
}

} // namespace

std::int32_t cpld_read_device(std::uint8_t* buffer, std::uint32_t address, std::uint32_t length) {
    const std::int32_t status = length == 1 ? readRegisters(buffer, address, length) : badArgument;
    standin::logCall("cpld_read_device 0x%04X %u = %d", address, length, status);
    return status;
}

std::int32_t cpld_read_block_device(std::uint8_t* buffer, std::uint32_t address,
                                    std::uint32_t length, std::uint32_t stride) {
    const std::int32_t status = stride == 1 ? readRegisters(buffer, address, length) : badArgument;
    standin::logCall("cpld_read_block_device 0x%04X %u %u = %d", address, length, stride, status);
    return status;
}
