#include "payload/cir_payload.h"

#include "console/output.h"
#include "cpld/picpwr_block.h"
#include "payload/cir_payload_decoder.h"
#include "payload/display_menu.h"

namespace zolt {

namespace {

Status requirePayload(std::uint8_t picpwrId, PayloadBuffer& buffer) {
    if (const auto status = PicpwrBlock(picpwrId).read(picpwrModuleClass, buffer); status != 0) {
        print<"Unable to read PICPWR %d module class using CPLD raw API, status %d\n">(picpwrId,
                                                                                       status);
        buffer.push_back(0); // module class 0: no payload
    }
    const auto moduleClass = byteOf(buffer);
    if (moduleClass == 0) {
        write("\nNo CIR payload is present for this PICPWR\n");
    }
    return moduleClass.value_or(0) == 0 ? statusNothingToShow : statusDone;
}

} // namespace

Status showCirPayload(std::uint8_t picpwrId, std::uint8_t format) {
    PayloadBuffer buffer;
    std::uint16_t payloadOffset = 0;
    if (const Status status = requireDiscovered(picpwrId, buffer); status != statusDone) {
        return status;
    }
    if (const Status status = requirePayload(picpwrId, buffer); status != statusDone) {
        return status;
    }
    if (const Status status = readPayloadOffset(picpwrId, buffer, payloadOffset);
        status != statusDone) {
        return status;
    }
    if (const Status status = fetchPayload(payloadOffset, cirPayloadFetch, buffer);
        status != statusDone) {
        return status;
    }
    return showByChoice(
        format, [&](std::int8_t choice) { printCirPayload(buffer, payloadOffset, choice); });
}

void printCirPayload(const PayloadBuffer& payload, std::uint32_t payloadOffset,
                     std::int8_t choice) {
    show({.bytes = payload,
          .dumpLength = statedPayloadSize(payload).value_or(0),
          .dumpAddress = payloadDumpAddress(payloadOffset),
          .decode = decodeCirPayload},
         choice);
}

} // namespace zolt
