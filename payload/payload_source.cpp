#include "payload/payload_source.h"

#include "console/output.h"
#include "cpld/picpwr_block.h"
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <memory>
#include <new>

namespace zolt {

namespace {

// Releases the HAL's object after the read, so that none exists when the raw path is tried.
std::int32_t readThroughHal(std::uint16_t payloadOffset, std::uint32_t length,
                            PayloadBuffer& buffer) {
    HAL_cfgdata payloads(payloadBlockName);
    const std::int32_t status =
        payloads.ReadIO(buffer, length, payloadOffset + payloadIndexOfOffset0);
    payloads.Release();
    return status;
}

} // namespace

Status requireDiscovered(std::uint8_t picpwrId, PayloadBuffer& buffer) {
    if (const auto status = PicpwrBlock(picpwrId).read(picpwrDstat, buffer); status != 0) {
        print<"Unable to read PICPWR DSTAT using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    const auto dstat = byteOf(buffer);
    if (dstat == 0) {
        print<"\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR %d\n">(picpwrId);
    }
    return dstat.value_or(0) == 0 ? statusNothingToShow : statusDone;
}

Status readPayloadOffset(std::uint8_t picpwrId, PayloadBuffer& buffer,
                         std::uint16_t& payloadOffset) {
    if (const auto status = PicpwrBlock(picpwrId).read(picpwrPayloadOffset, buffer); status != 0) {
        print<"Unable to read PICPWR payload offset using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    const auto offset = wordOf(buffer);
    if (!offset) {
        return statusNothingToShow;
    }
    payloadOffset = *offset;
    return statusDone;
}

Status fetchPayload(std::uint16_t payloadOffset, std::uint32_t length, PayloadBuffer& buffer) {
    if (readThroughHal(payloadOffset, length, buffer) == 0) {
        return statusDone;
    }
    const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow) std::uint8_t[length]{});
    if (scratch == nullptr) {
        write("Failed to allocate memory for PICPWR payload\n");
        return statusOutOfMemory;
    }
    if (const auto status =
            cpld_read_block_device(scratch.get(), payloadRawStart + payloadOffset, length, 1);
        status != 0) {
        print<"Unable to read PICPWR payload using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    // On the raw path the two bytes of the offset precede the payload. The failed read of the HAL
    // may have replaced them.
    const auto low = static_cast<std::uint8_t>(payloadOffset & 0xFF);
    const auto high = static_cast<std::uint8_t>(payloadOffset >> 8);
    buffer.assign({low, high});
    buffer.reserve(buffer.size() + length);
    buffer.insert(buffer.end(), scratch.get(), scratch.get() + length);
    return statusDone;
}

} // namespace zolt
