#include "board/module_codec.h"

#include "board/stated.h"

#include <algorithm>

namespace board {

namespace {

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::uint8_t byteOf(std::size_t number) {
    return static_cast<std::uint8_t>(std::min<std::size_t>(number, 0xFF));
}

// Length of a payload whose fields have @p used bytes: whole units, with room for the checksum.
constexpr std::size_t payloadSize(std::size_t used) {
    return (used / payloadSizeUnit + 1) * payloadSizeUnit;
}

// Whether the fields hold all bits of a record that are set.
bool holdAll(std::span<const BitField> fields, std::span<const BitField> moreFields,
             std::span<const std::uint8_t> record) {
    Bytes held(record.size());
    for (const auto rows : {fields, moreFields}) {
        for (const BitField& field : rows) {
            field.encode(field.decode(record), held);
        }
    }
    return std::ranges::equal(held, record);
}

bool holdAll(const ModulePayload& payload) {
    if (!holdAll(headerFields, {}, payload.header) ||
        !holdAll(backplaneFields, {}, payload.backplane)) {
        return false;
    }
    return std::ranges::all_of(payload.endPoints, [](const auto& endPoint) {
        const bool indirect = indirectField.decode(endPoint) != 0;
        return holdAll(endPointFields, moreEndPointFields(indirect), endPoint);
    });
}

// Number of end points in a payload: the number that the payload states, if its length fits;
// else the lowest number that leaves nothing but zeros behind the end points.
std::optional<std::size_t> endPointsIn(std::span<const std::uint8_t> bytes) {
    const auto fits = [&](std::size_t count) {
        return payloadSize(payloadHeaderSize + count * endPointSize) == bytes.size();
    };
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    if (const std::size_t stated = countField.decode(bytes); fits(stated)) {
        return stated;
    }
    for (std::size_t count = 0; count <= mostEndPoints; ++count) {
        if (fits(count) &&
            std::ranges::all_of(
                bytes.subspan(payloadHeaderSize + count * endPointSize,
                              bytes.size() - 1 - payloadHeaderSize - count * endPointSize),
                isZero)) {
            return count;
        }
    }
    return std::nullopt;
}

// Takes the body from a payload's bytes. Returns false when it does not fit.
bool takeBody(ModulePayload& payload, std::span<const std::uint8_t> bytes) {
    const auto body = bytes.subspan(payloadHeaderSize);
    switch (payload.body()) {
    case PayloadBody::nothing:
        return true;
    case PayloadBody::backplane:
        if (body.size() <= backplaneSize) {
            return false;
        }
        std::ranges::copy(body.first(backplaneSize), payload.backplane.begin());
        return true;
    case PayloadBody::endPoints:
        break;
    }
    const auto count = endPointsIn(bytes);
    payload.endPoints.resize(count.value_or(0));
    for (std::size_t i = 0; i < payload.endPoints.size(); ++i) {
        std::ranges::copy(body.subspan(i * endPointSize, endPointSize),
                          payload.endPoints[i].begin());
    }
    return count.has_value();
}

// Takes the descriptor at the start of the bytes. Returns its length, 0 when none fits.
std::size_t takeDescriptor(std::span<const std::uint8_t> bytes, OemArea& area) {
    if (bytes.size() < oemHeaderSize) {
        return 0;
    }
    const std::uint8_t type = bytes[0];
    const std::uint8_t stated = bytes[1];
    const std::size_t ofType = oemDescriptorSize(type);
    const bool hasFields = ofType > oemHeaderSize;
    const std::size_t size =
        hasFields || stated < oemHeaderSize || stated > bytes.size() ? ofType : std::size_t{stated};
    if (size > bytes.size()) {
        return 0;
    }
    const auto data = bytes.subspan(oemHeaderSize, size - oemHeaderSize);
    area.descriptors.push_back(
        {type, Bytes(data.begin(), data.end()), statedUnless(byteOf(size), stated)});
    return size;
}

} // namespace

Bytes encode(const ModulePayload& payload) {
    Bytes bytes(payload.header.begin(), payload.header.end());
    if (payload.body() == PayloadBody::backplane) {
        append(bytes, payload.backplane);
    }
    for (const auto& endPoint : payload.endPoints) {
        append(bytes, endPoint);
    }
    const std::size_t size = payloadSize(bytes.size());
    bytes.resize(size - 1);
    lengthField.encode(payload.statedSize.value_or(byteOf(size / payloadSizeUnit)), bytes);
    countField.encode(payload.statedEndPoints.value_or(byteOf(payload.endPoints.size())), bytes);
    bytes.push_back(payload.checksum.value_or(checksumOf(bytes)));
    return bytes;
}

Bytes encode(const OemArea& area) {
    Bytes bytes(oemHeaderSize);
    for (const OemDescriptor& descriptor : area.descriptors) {
        const std::size_t size = oemHeaderSize + descriptor.data.size();
        bytes.push_back(descriptor.type);
        bytes.push_back(descriptor.statedSize.value_or(byteOf(size)));
        append(bytes, descriptor.data);
    }
    bytes[0] = area.statedSize.value_or(byteOf(bytes.size() + 1));
    bytes[1] = area.statedDescriptors.value_or(byteOf(area.descriptors.size()));
    bytes.push_back(area.checksum.value_or(checksumOf(bytes)));
    return bytes;
}

std::optional<ModulePayload> decodePayload(std::span<const std::uint8_t> bytes) {
    if (bytes.size() <= payloadHeaderSize) {
        return std::nullopt;
    }
    ModulePayload payload;
    std::ranges::copy(bytes.first(payloadHeaderSize), payload.header.begin());
    lengthField.encode(0, payload.header);
    countField.encode(0, payload.header);
    if (!takeBody(payload, bytes) || !holdAll(payload)) {
        return std::nullopt;
    }
    payload.statedSize =
        statedUnless(byteOf(bytes.size() / payloadSizeUnit), bytes[lengthField.offset]);
    payload.statedEndPoints = statedUnless(byteOf(payload.endPoints.size()),
                                           static_cast<std::uint8_t>(countField.decode(bytes)));
    const auto summed = bytes.first(bytes.size() - 1);
    payload.checksum = statedUnless(checksumOf(Bytes(summed.begin(), summed.end())), bytes.back());
    return std::ranges::equal(encode(payload), bytes) ? std::optional(payload) : std::nullopt;
}

std::optional<OemArea> decodeOemArea(std::span<const std::uint8_t> bytes) {
    if (bytes.size() <= oemHeaderSize || bytes.size() > longestOemArea) {
        return std::nullopt;
    }
    const auto summed = bytes.first(bytes.size() - 1);
    OemArea area;
    auto rest = summed.subspan(oemHeaderSize);
    while (!rest.empty()) {
        const std::size_t size = takeDescriptor(rest, area);
        if (size == 0 || area.descriptors.size() > bytes[1]) {
            return std::nullopt;
        }
        rest = rest.subspan(size);
    }
    area.statedSize = statedUnless(byteOf(bytes.size()), bytes[0]);
    area.statedDescriptors = statedUnless(byteOf(area.descriptors.size()), bytes[1]);
    area.checksum = statedUnless(checksumOf(Bytes(summed.begin(), summed.end())), bytes.back());
    return area;
}

} // namespace board
