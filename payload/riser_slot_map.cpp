#include "payload/riser_slot_map.h"

#include "console/output.h"
#include "cpld/register_access.h"
#include "payload/display_menu.h"
#include "payload/riser_slot_map_decoder.h"
#include "platform/cpld_driver.h"

#include <algorithm>
#include <memory>
#include <new>

namespace zolt {

namespace {

constexpr std::uint32_t rawBytes = 1024;
constexpr std::uint16_t rawAddress = 0x8A00;

// The tool passes the 16-bit address sign-extended to 32 bits, which the driver accepts.
constexpr std::uint32_t driverAddress = 0xFFFF0000U | rawAddress;

std::int32_t readRaw(std::uint8_t* bytes) {
    for (std::uint32_t i = 0; i < rawBytes; ++i) {
        if (const auto status = cpld_read_device(bytes + i, driverAddress + i, 1); status != 0) {
            return status;
        }
    }
    return 0;
}

Status fetchBlob(std::vector<std::uint8_t>& blob, std::uint32_t& blobSize) {
    // "AMP" is the HAL's own spelling.
    if (readArea("RISER_SLOT_AMP_BLOB", blob, blobSize) == 0) {
        return statusDone;
    }
    const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow) std::uint8_t[rawBytes]{});
    if (scratch == nullptr) {
        write("Failed to allocate memory for riser slot mapping blob\n");
        return statusOutOfMemory;
    }
    if (const auto status = readRaw(scratch.get()); status != 0) {
        print<"Unable to read RISER_SLOT_MAP_BLOB using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    blob.assign(scratch.get(), scratch.get() + rawBytes);
    blobSize = rawBytes;
    return statusDone;
}

} // namespace

Status showRiserSlotMap(std::uint8_t format) {
    std::vector<std::uint8_t> blob;
    std::uint32_t blobSize = 0;
    if (const Status status = fetchBlob(blob, blobSize); status != statusDone) {
        return status;
    }
    return showByChoice(format, [&](std::int8_t choice) {
        printRiserSlotMap(blob, blobSize, static_cast<std::uint8_t>(choice));
    });
}

void printRiserSlotMap(std::vector<std::uint8_t> blob, std::uint32_t blobSize,
                       std::uint8_t choice) {
    blob.resize(std::min<std::size_t>(blob.size(), blobSize));
    show({.bytes = blob,
          .dumpLength = blob.size(),
          .dumpAddress = cpldWindow + rawAddress,
          .decode = decodeRiserSlotMap},
         static_cast<std::int8_t>(choice));
}

} // namespace zolt
