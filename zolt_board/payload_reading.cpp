#include "zolt_board/payload_reading.h"

#include <algorithm>

namespace zolt_board {

std::optional<std::size_t> PayloadReading::checksumPlace() const {
    constexpr std::size_t headerOnlySize = 2 * board::payloadSizeUnit;
    if (board::bodyOf(deviceClass) == board::PayloadBody::nothing) {
        return headerOnlySize - 1;
    }
    return statedSize == 0 ? std::nullopt : std::optional(statedSize - 1);
}

std::size_t PayloadReading::oemAreaSize() const {
    return statedSize == 0 || statedSize >= bytes.size() ? 0 : bytes[statedSize];
}

std::optional<PayloadReading> payloadOf(const SlotReading& slot) {
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    if (!slot.payload || slot.payload->size() < board::payloadHeaderSize ||
        std::ranges::all_of(slot.payload->first(board::payloadHeaderSize), isZero)) {
        return std::nullopt;
    }
    PayloadReading payload{.slot = &slot, .offset = *slot.payloadOffset, .bytes = *slot.payload};
    payload.statedSize = board::lengthField.decode(payload.bytes) * board::payloadSizeUnit;
    payload.deviceClass = payload.bytes[1];
    payload.fieldsEnd = board::payloadHeaderSize;
    switch (board::bodyOf(payload.deviceClass)) {
    case board::PayloadBody::nothing:
        break;
    case board::PayloadBody::backplane:
        payload.fieldsEnd += board::backplaneSize;
        break;
    case board::PayloadBody::endPoints:
        payload.endPoints = board::countField.decode(payload.bytes);
        break;
    }
    if (slot.described != nullptr && !slot.described->payload.empty() &&
        slot.described->payloadOffset == slot.payloadOffset) {
        payload.described = slot.described->payload.size();
    }
    return payload;
}

std::vector<PayloadReading> payloadsOf(const ReaderView& board) {
    std::vector<PayloadReading> payloads;
    for (const SlotReading& slot : board.slots()) {
        if (auto payload = payloadOf(slot)) {
            payloads.push_back(*payload);
        }
    }
    return payloads;
}

} // namespace zolt_board
