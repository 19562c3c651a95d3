#include "payload/oem_area_decoder.h"

#include "payload/byte_reader.h"
#include "payload/cir_payload_decoder.h"
#include "payload/field_decoder.h"

#include <algorithm>

namespace zolt {

namespace {

constexpr ValueRow areaSize{Bits::byte(0), line<"\n\nOEM AREA SIZE               = %d\n">};
constexpr ValueRow descriptorCount{Bits::byte(1), line<"TOTAL NUMBER OF DESCRIPTORS = %d\n">};
constexpr ValueRow oemAreaChecksum{Bits::byte(0),
                                   line<"\n\nCHECKSUM                    = %d\n\n\n">};

// The offsets of the rows below count from the start of a descriptor.
constexpr std::size_t firstDescriptor = 2;
constexpr ValueRow descriptorType{Bits::byte(0), line<"\nDESCRIPTOR TYPE             = %d\n">};
constexpr ValueRow descriptorSize{Bits::byte(1), line<"DESCRIPTOR SIZE             = %d\n">};

constexpr ValueRow connectionRows[] = {
    {Bits::byte(2), line<"SRC ID                      = %d\n">},
    {Bits::byte(3), line<"DST ID                      = %d\n">},
};

constexpr ValueRow placeRows[] = {
    {Bits::byte(2), line<"BAY ID                      = %d\n">},
    {Bits::byte(3), line<"STARTING SLOT OFFSET        = %d\n">},
    {Bits::byte(4), line<"LOCATION                    = %d\n">},
};

constexpr ValueRow slotDescriptorRows[] = {
    {Bits::byte(2), line<"SLOT PRESENCE BIT MAP       = 0x%X\n">},
};

// Rows by descriptor type, from type 1 on.
constexpr std::span<const ValueRow> rowsOfType[] = {connectionRows, placeRows, slotDescriptorRows};

void decodeDescriptors(FieldDecoder& fields, unsigned count) {
    // The position has 8 bits and may wrap; a size of 0 does not advance it. Only the count bounds
    // the loop.
    std::uint8_t position = 0;
    for (unsigned done = 0; done < count; ++done) {
        const std::size_t start = position + firstDescriptor;
        const std::size_t type = fields.add(descriptorType, start);
        const std::uint16_t size = fields.add(descriptorSize, start);
        if (type >= 1 && type <= std::size(rowsOfType)) {
            fields.add(rowsOfType[type - 1], start);
        }
        position = static_cast<std::uint8_t>(position + size);
    }
}

} // namespace

std::span<const std::uint8_t> findOemArea(std::span<const std::uint8_t> fetched) {
    const auto start = statedPayloadSize(fetched);
    if (!start) {
        return {};
    }
    const std::size_t length = ByteReader(fetched).byte(*start).value_or(0);
    if (length == 0) {
        return {};
    }
    const auto area = fetched.subspan(*start);
    return area.first(std::min(length, area.size()));
}

void decodeOemArea(std::span<const std::uint8_t> area, TakeField take) {
    FieldDecoder fields(area, take);
    const std::size_t length = fields.add(areaSize);
    decodeDescriptors(fields, fields.add(descriptorCount));
    fields.add(oemAreaChecksum, std::max(length, area.size()) - 1);
}

} // namespace zolt
