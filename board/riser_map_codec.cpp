#include "board/riser_map_codec.h"

#include "board/cpld_map.h"
#include "board/stated.h"

#include <algorithm>

namespace board {

namespace {

using ConstBytes = std::span<const std::uint8_t>;

std::uint8_t low(std::size_t number) {
    return static_cast<std::uint8_t>(number);
}

// Takes a counted list of items from the front of the bytes. Returns none when it does not fit.
std::optional<ConstBytes> takeList(ConstBytes& bytes, std::size_t itemSize) {
    if (bytes.empty() || bytes.size() - 1 < bytes[0] * itemSize) {
        return std::nullopt;
    }
    const auto items = bytes.subspan(1, bytes[0] * itemSize);
    bytes = bytes.subspan(1 + items.size());
    return items;
}

// A route is described by its type's fields. Other bytes of it must be 0.
bool holdsRoute(ConstBytes route) {
    std::array<std::uint8_t, dslPayloadSize> held{route[0]};
    const auto* const own =
        std::ranges::find(dslPayloadFields, unsigned{route[0]}, &FieldsOfType::type);
    if (own != std::end(dslPayloadFields)) {
        for (const BitField& field : own->fields) {
            field.encode(field.decode(route), held);
        }
    }
    return std::ranges::equal(held, route);
}

// Takes the routes of a record, one for each link. The record may state another number of them.
bool takeRoutes(ConstBytes& bytes, RiserRecord& record) {
    const std::size_t size = record.dsls.size() * dslPayloadSize;
    if (bytes.empty() || bytes.size() - 1 < size) {
        return false;
    }
    record.statedRoutes = statedUnless(low(record.dsls.size()), bytes[0]);
    for (std::size_t i = 0; i < record.dsls.size(); ++i) {
        const auto route = bytes.subspan(1 + i * dslPayloadSize, dslPayloadSize);
        if (!holdsRoute(route)) {
            return false;
        }
        std::ranges::copy(route, record.dsls[i].route.begin());
    }
    bytes = bytes.subspan(1 + size);
    return true;
}

std::optional<RiserRecord> takeRecord(ConstBytes& bytes) {
    if (bytes.size() < recordHeadSize) {
        return std::nullopt;
    }
    RiserRecord record;
    ConstBytes rest = bytes.subspan(recordHeadSize);
    std::ranges::copy(bytes.first(recordHeadSize), record.head.begin());
    record.head[1] = 0; // the length
    const auto ids = takeList(rest, 1);
    const auto slots = ids ? takeList(rest, cardSlotSize) : std::nullopt;
    if (!slots) {
        return std::nullopt;
    }
    for (const std::uint8_t id : *ids) {
        record.dsls.push_back({.id = id});
    }
    record.cardSlots.assign(slots->begin(), slots->end());
    if (!takeRoutes(rest, record)) {
        return std::nullopt;
    }
    const std::size_t size = bytes.size() - rest.size();
    if (size > 0xFF || bytes[1] != size) {
        record.statedSize = bytes[1];
    }
    bytes = rest;
    return record;
}

} // namespace

Bytes encode(const RiserRecord& record) {
    Bytes bytes(record.head.begin(), record.head.end());
    bytes.push_back(low(record.dsls.size()));
    for (const RiserDsl& dsl : record.dsls) {
        bytes.push_back(dsl.id);
    }
    bytes.push_back(low(record.cardSlots.size() / cardSlotSize));
    bytes.insert(bytes.end(), record.cardSlots.begin(), record.cardSlots.end());
    bytes.push_back(record.statedRoutes.value_or(low(record.dsls.size())));
    for (const RiserDsl& dsl : record.dsls) {
        bytes.insert(bytes.end(), dsl.route.begin(), dsl.route.end());
    }
    bytes[1] = record.statedSize.value_or(low(bytes.size()));
    return bytes;
}

Bytes encode(const RiserMap& map) {
    Bytes bytes(map.head.begin(), map.head.end());
    for (const RiserRecord& record : map.records) {
        const Bytes encoded = encode(record);
        bytes.insert(bytes.end(), encoded.begin(), encoded.end());
    }
    bytes[recordCountOffset] = map.statedRecords.value_or(low(map.records.size()));
    bytes.push_back(map.checksum.value_or(checksumOf(bytes)));
    return bytes;
}

std::optional<RiserMap> decodeRiserMap(std::span<const std::uint8_t> blob) {
    if (blob.size() != riserMapSize) {
        return std::nullopt;
    }
    RiserMap map;
    std::ranges::copy(blob.first(riserMapHeadSize), map.head.begin());
    map.head[recordCountOffset] = 0;
    ConstBytes rest = blob.subspan(riserMapHeadSize);
    // Records that cannot be taken leave bytes behind that no mapping has.
    while (map.records.size() < blob[recordCountOffset]) {
        auto record = takeRecord(rest);
        if (!record) {
            return std::nullopt;
        }
        map.records.push_back(std::move(*record));
    }
    if (rest.empty()) {
        return std::nullopt;
    }
    const auto summed = blob.first(blob.size() - rest.size());
    map.checksum = statedUnless(checksumOf(Bytes(summed.begin(), summed.end())), rest[0]);
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return std::ranges::all_of(rest.subspan(1), isZero) ? std::optional(std::move(map))
                                                        : std::nullopt;
}

} // namespace board
