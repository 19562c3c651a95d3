#include "payload/cir_payload_decoder.h"

#include "payload/byte_reader.h"
#include "payload/field_decoder.h"

namespace zolt {

namespace {

constexpr std::size_t deviceClassOffset = 1;
constexpr std::size_t payloadSizeOffset = 2;
constexpr std::size_t payloadSizeUnit = 8;

// The layouts that the device class selects.
enum Layout : std::uint8_t {
    plainCard = 1, // no descriptor behind the header
    backplane = 2,
    endPoints = 4,
    everyLayout = plainCard | backplane | endPoints,
};

constexpr Layout layoutOf(std::uint8_t deviceClass) {
    switch (deviceClass) {
    case 0x1A:
    case 0x1B:
        return plainCard;
    case 0x2A:
        return backplane;
    default:
        return endPoints;
    }
}

struct HeaderRow {
    ValueRow field;
    std::uint8_t shownFor = everyLayout;
};

constexpr HeaderRow headerRows[] = {
    {{Bits::byte(0), line<"PAYLOAD_FORMAT_VERSION        = %d\n">}},
    {{Bits::byte(deviceClassOffset), line<"DEVICE_CLASS                  = 0x%02X\n">}},
    {{Bits::byte(payloadSizeOffset), line<"STATIC_PAYLOAD_SIZE           = %d\n">}},
    {{Bits::bigEndian(4), line<"DEVICE_ID                     = 0x%02X\n">}},
    {{Bits::bigEndian(6), line<"VENDOR_ID                     = 0x%02X\n">}},
    {{Bits::byte(8), line<"DEVICE_VERSION                = %d\n">}, plainCard | endPoints},
    {{Bits::range(10, 7, 4), line<"NUM_XWIRES                    = %d\n">}, backplane | endPoints},
    {{Bits::range(10, 2, 0), line<"NUM_PWIRES                    = %d\n">}},
    {{Bits::range(11, 7, 5), line<"TARGET_I2C_GPIO_DEV_TYPE      = %d\n">}},
    {{Bits::range(12, 6, 0), line<"TARGET_I2C_GPIO_DEV_ADDRESS   = 0x%02X\n">}},
};

constexpr ValueRow endPointCount{Bits::range(11, 4, 0),
                                 line<"NUM_EP_DESCRIPTORS            = %d\n">};

constexpr ValueRow backplaneRows[] = {
    {Bits::byte(13), line<"BP DESCRIPTOR VERSION         = %d\n">},
    {Bits::byte(14), line<"BAY_ID                        = %d\n">},
    {Bits::littleEndian(15, 2), line<"BACKPLANE_ID                  = %d\n">},
    {Bits::range(16, 7, 6), line<"PWR CBL COUNT                 = %d\n">},
    {Bits::range(16, 5, 2), line<"STARTING SLOT OFFSET          = %d\n">},
    {Bits::range(17, 6, 4), line<"BP LOCATION                   = %d\n">},
    {Bits::range(17, 3, 0), line<"LAST VALID CONN DESC          = %d\n">},
    {Bits::range(18, 7, 6), line<"MAX PCIE SPEED                = %d\n">},
    {Bits::range(18, 5, 0), line<"LAST VALID SLOT DESC          = %d\n">},
    {Bits::range(19, 4, 3), line<"BP_TYPE                       = %d\n">},
    {Bits::range(19, 2, 0), line<"LAST VALID SWITCH PORT        = %d\n">},
};

// The descriptor of an end point has 6 bytes. INDIRECT selects the meaning of the last three.
constexpr std::size_t firstEndPoint = 13;
constexpr std::size_t endPointSize = 6;

constexpr ValueRow endPointRows[] = {
    {Bits::range(0, 7, 4), line<"PICPWR_INDEX                  = %d\n">},
    {Bits::bit(0, 3), line<"I2C_MUX_PRES                  = %d\n">},
};

constexpr ValueRow indirect{Bits::bit(0, 2), line<"INDIRECT                      = %d\n">};

constexpr ValueRow laterEndPointRows[] = {
    {Bits::bit(0, 1), line<"HOT_PLUG                      = %d\n">},
    {Bits::range(1, 7, 5), line<"EP_TYPE                       = %d\n">},
    {Bits::range(1, 3, 0), line<"EP_I2C_SOURCE                 = %d\n">},
    {Bits::range(2, 7, 5), line<"EP_LANE_WIDTH                 = %d\n">},
    {Bits::range(2, 3, 0), line<"I2C_MUX_DCH                   = %d\n">},
};

constexpr ValueRow indirectRows[] = {
    {Bits::range(3, 7, 4), line<"PCIE_SW_PORT_DISC_ORDER_LOWER = %d\n">},
    {Bits::range(3, 2, 0), line<"PCIE_SW_GROUP_LOWER           = %d\n">},
    {Bits::range(4, 7, 4), line<"PCIE_SW_PORT_DISC_ORDER_UPPER = %d\n">},
    {Bits::range(4, 2, 0), line<"PCIE_SW_GROUP_UPPER           = %d\n">},
};

constexpr ValueRow directRows[] = {
    {Bits::bit(0, 0), line<"USB_HUB_PRES                  = %d\n">},
    {Bits::range(3, 7, 4), line<"USB_HUB_DCH                   = %d\n">},
    {Bits::range(3, 3, 0), line<"EP_USB_SOURCE                 = %d\n">},
    {Bits::range(4, 6, 4), line<"DSL_INDEX_LOWER               = %d\n">},
    {Bits::range(4, 2, 0), line<"DSL_LANE_OFFSET_LOWER         = %d\n">},
    {Bits::range(5, 6, 4), line<"DSL_INDEX_UPPER               = %d\n">},
    {Bits::range(5, 2, 0), line<"DSL_LANE_OFFSET_UPPER         = %d\n">},
};

constexpr ValueRow payloadChecksum{Bits::byte(0),
                                   line<"\n\nCHECKSUM                      = %d\n\n\n">};
constexpr std::size_t plainCardChecksum = 15;

void decodeEndPoints(FieldDecoder& fields) {
    const std::uint16_t count = fields.add(endPointCount);
    for (std::uint8_t i = 1; i <= count; ++i) {
        const std::size_t start = firstEndPoint + endPointSize * (i - 1U);
        fields.heading(line<"\n\nEND POINT %d\n\n">, i);
        fields.add(endPointRows, start);
        const bool isIndirect = fields.add(indirect, start) != 0;
        fields.add(laterEndPointRows, start);
        if (isIndirect) {
            fields.add(indirectRows, start);
        } else {
            fields.add(directRows, start);
        }
    }
}

} // namespace

std::optional<std::size_t> statedPayloadSize(std::span<const std::uint8_t> payload) {
    const auto units = ByteReader(payload).byte(payloadSizeOffset);
    if (!units) {
        return std::nullopt;
    }
    return *units * payloadSizeUnit;
}

void decodeCirPayload(std::span<const std::uint8_t> payload, TakeField take) {
    // The default of a missing byte has no effect: the listing ends at the line of that byte.
    const Layout layout = layoutOf(ByteReader(payload).byte(deviceClassOffset).value_or(0));
    const std::size_t size = statedPayloadSize(payload).value_or(0);

    FieldDecoder fields(payload, take);
    fields.heading(line<"\n\nPAYLOAD HEADER :\n\n">);
    for (const HeaderRow& row : headerRows) {
        if ((row.shownFor & layout) != 0) {
            fields.add(row.field);
        }
    }
    if (layout == backplane) {
        fields.add(backplaneRows);
    } else if (layout == endPoints) {
        decodeEndPoints(fields);
    }
    if (layout == plainCard) {
        fields.add(payloadChecksum, plainCardChecksum);
    } else if (size != 0) { // a payload of length 0 has no checksum
        fields.add(payloadChecksum, size - 1);
    }
}

} // namespace zolt
