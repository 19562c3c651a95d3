#include "payload/oem_area.h"

#include "console/output.h"
#include "payload/cir_payload_decoder.h"
#include "payload/display_menu.h"
#include "payload/oem_area_decoder.h"

namespace zolt {

Status showOemArea(std::uint8_t picpwrId, std::uint8_t format) {
    PayloadBuffer buffer;
    std::uint16_t payloadOffset = 0;
    if (const Status status = requireDiscovered(picpwrId, buffer); status != statusDone) {
        return status;
    }
    if (const Status status = readPayloadOffset(picpwrId, buffer, payloadOffset);
        status != statusDone) {
        return status;
    }
    if (const Status status = fetchPayload(payloadOffset, oemAreaFetch, buffer);
        status != statusDone) {
        return status;
    }
    const std::size_t payloadSize = statedPayloadSize(buffer).value_or(0);
    if (payloadSize > oemAreaFetch) {
        write("Invalid payload size\n");
        return statusNothingToShow;
    }
    const auto found = findOemArea(buffer);
    const PayloadBuffer oemArea(found.begin(), found.end());
    return showByChoice(format, [&](std::int8_t choice) {
        printOemArea(oemArea, payloadOffset, static_cast<std::uint32_t>(payloadSize), choice);
    });
}

void printOemArea(const PayloadBuffer& oemArea, std::uint32_t payloadOffset,
                  std::uint32_t payloadSize, std::int8_t choice) {
    if (oemArea.empty()) {
        write("OEM area is not present for this PICPWR\n\n\n");
        return;
    }
    show({.bytes = oemArea,
          .dumpLength = oemArea.size(),
          .dumpAddress = payloadDumpAddress(payloadOffset) + payloadSize,
          .decode = decodeOemArea},
         choice);
}

} // namespace zolt
