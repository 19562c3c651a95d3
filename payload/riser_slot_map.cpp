#include "payload/riser_slot_map.h"

#include "console/output.h"
#include "cpld/register_access.h"
#include "payload/display_menu.h"
#include "payload/riser_slot_map_decoder.h"
#include "payload/riser_slot_map_source.h"
#include "platform/cpld_driver.h"

#include <algorithm>
#include <memory>
#include <new>

namespace zolt {

namespace {

std::int32_t readRaw(std::uint8_t* bytes) {
    for (std::uint32_t i = 0; i < riserMapRawBytes; ++i) {
        if (const auto status = cpld_read_device(bytes + i, riserMapDriverAddress + i, 1);
            status != 0) {
            return status;
        }
    }
    return 0;
}

Status fetchBlob(std::vector<std::uint8_t>& blob, std::uint32_t& blobSize) {
    if (readArea(riserMapName, blob, blobSize) == 0) {
        return statusDone;
    }
    const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow)
                                                      std::uint8_t[riserMapRawBytes]{});
    if (scratch == nullptr) {
        write("Failed to allocate memory for riser slot mapping blob\n");
        return statusOutOfMemory;
    }
    if (const auto status = readRaw(scratch.get()); status != 0) {
        print<"Unable to read RISER_SLOT_MAP_BLOB using CPLD raw API, status %d\n">(status);
        return statusRawReadFailed;
    }
    blob.assign(scratch.get(), scratch.get() + riserMapRawBytes);
    blobSize = riserMapRawBytes;
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
          .dumpAddress = cpldWindow + riserMapRawAddress,
          .decode = decodeRiserSlotMap},
         static_cast<std::int8_t>(choice));
}

} // namespace zolt
