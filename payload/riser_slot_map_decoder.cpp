#include "payload/riser_slot_map_decoder.h"

#include "payload/field_decoder.h"
#include "payload/riser_slot_map_fields.h"

namespace zolt {

namespace {

constexpr ValueRow configurationRows[] = {
    {Bits::byte(0), line<"RISER CONFIG# MAJOR            = %d\n">},
    {Bits::byte(1), line<"RISER CONFIG# MINOR            = %d\n">},
};

constexpr TextRow description{riser_map::descriptionOffset, riser_map::descriptionLength,
                              line<"RISER CONFIG DESCRIPTION       = %s\n">};

constexpr ValueRow otherSlotRows[] = {
    {Bits::byte(50), line<"KARN CARD PRESENCE             = %d\n">},
    {Bits::byte(51), line<"KARN HWUID MSB                 = 0x%02X\n">},
    {Bits::byte(52), line<"KARN HWUID LSB                 = 0x%02X\n">},
    {Bits::byte(53), line<"KARN SLOT NUMBER               = %d\n">},
    {Bits::byte(54), line<"KARN SLOT TYPE                 = %d\n">},
    {Bits::byte(55), line<"EMBEDDED OCP NIC CARD PRESENCE = %d\n">},
    {Bits::byte(56), line<"EMBEDDED OCP NIC SLOT NUMBER   = %d\n">},
    {Bits::byte(57), line<"EMBEDDED OCP NIC SLOT TYPE     = %d\n">},
};

constexpr ValueRow recordCount{Bits::byte(riser_map::recordCount),
                               line<"NUMBER OF PICPWR SLOT DETAILS  = %d\n">};
constexpr ValueRow slotMapChecksum{Bits::byte(0),
                                   line<"\n\nCHECKSUM                       = %d\n\n\n">};

// The offsets of the rows below count from the start of a record.
constexpr ValueRow recordId{Bits::byte(0), line<"PICPWR ID                      = %d\n">};
constexpr ValueRow recordSize{Bits::byte(riser_map::recordSize),
                              line<"PAYLOAD SIZE                   = %d\n">};
constexpr TextRow location{riser_map::locationOffset, riser_map::locationLength,
                           line<"RISER PHYSICAL LOCATION        = %s\n">};
constexpr TextRow partNumber{riser_map::partNumberOffset, riser_map::partNumberLength,
                             line<"MECH ASSY XPN                  = %s\n">};
constexpr ValueRow hwuidRows[] = {
    {Bits::byte(18), line<"HWUID MSB                      = 0x%02X\n">},
    {Bits::byte(19), line<"HWUID LSB                      = 0x%02X\n">},
};
constexpr ValueRow dslCount{Bits::byte(riser_map::dslCount),
                            line<"NO OF DSLs                     = %d\n">};

// From the DSLs on, places depend on the number of DSLs and slots. The offsets of the rows below
// count from the start of the part that they show.
constexpr UnitRow dsl{Bits::byte(0), line<"DSL%d                           = %d\n">};
constexpr ValueRow slotCount{Bits::byte(0), line<"NO OF SLOTS                    = %d\n">};
constexpr UnitRow riserSlotRows[] = {
    {Bits::byte(0), line<"SLOT%d NUMBER                   = %d\n">},
    {Bits::byte(1), line<"SLOT%d TYPE                     = %d\n">},
};
constexpr ValueRow dslPayloadCount{Bits::byte(0), line<"NO OF DSL PAYLOADS             = %d\n">};

constexpr UnitRow dslType{Bits::byte(0), line<"DSL %d type                     = %d\n">};

constexpr UnitRow slRows[] = {
    {Bits::byte(1), line<"DSL %d SL index                 = %d\n">},
};

constexpr UnitRow ocpRows[] = {
    {Bits::byte(1), line<"DSL %d OCP index                = %d\n">},
    {Bits::byte(2), line<"DSL %d OCP lane index           = %d\n">},
};

constexpr UnitRow switchedRiserRows[] = {
    {Bits::byte(1), line<"DSL %d switched riser index     = %d\n">},
    {Bits::byte(2), line<"DSL %d SL index                 = %d\n">},
};

// Rows by DSL type, from type 1 on.
constexpr std::span<const UnitRow> rowsOfDslType[] = {slRows, ocpRows, switchedRiserRows};

std::size_t decodeDsls(FieldDecoder& fields, unsigned count, std::size_t at) {
    for (unsigned k = 1; k <= count; ++k) {
        fields.add(dsl, static_cast<std::uint8_t>(k), at++);
    }
    return at;
}

std::size_t decodeSlots(FieldDecoder& fields, unsigned count, std::size_t at) {
    for (unsigned j = 1; j <= count; ++j) {
        fields.add(riserSlotRows, static_cast<std::uint8_t>(j), at);
        at += riser_map::slotSize;
    }
    return at;
}

void decodeDslPayloads(FieldDecoder& fields, unsigned count, std::size_t at) {
    for (unsigned k = 1; k <= count; ++k) {
        const auto unit = static_cast<std::uint8_t>(k);
        const std::size_t type = fields.add(dslType, unit, at);
        if (type >= 1 && type <= std::size(rowsOfDslType)) {
            fields.add(rowsOfDslType[type - 1], unit, at);
        } else {
            fields.heading(line<"Invalid DSL type\n">);
        }
        at += riser_map::dslPayloadSize;
    }
}

// Returns the start of the next record. It follows from the size that the record states, not from
// the length of its fields.
std::size_t decodeRecord(FieldDecoder& fields, std::uint8_t number, std::size_t start) {
    fields.heading(line<"\n\nPICPWR %d SLOT INFORMATION :\n\n">, number);
    fields.add(recordId, start);
    const std::size_t size = fields.add(recordSize, start);
    fields.add(location, start);
    fields.add(partNumber, start);
    fields.add(hwuidRows, start);

    const unsigned dsls = fields.add(dslCount, start);
    std::size_t at = decodeDsls(fields, dsls, start + riser_map::firstDsl);
    const unsigned slots = fields.add(slotCount, at++);
    at = decodeSlots(fields, slots, at);
    // The listing shows this count but does not use it: every DSL has a payload.
    fields.add(dslPayloadCount, at++);
    decodeDslPayloads(fields, dsls, at);
    return start + size;
}

} // namespace

void decodeRiserSlotMap(std::span<const std::uint8_t> blob, TakeField take) {
    FieldDecoder fields(blob, take);
    fields.heading(line<"\n\nCONFIG DETAILS :\n\n">);
    fields.add(configurationRows);
    fields.add(description);
    fields.heading(line<"\n\nNON PICPWR SLOT INFORMATION :\n\n">);
    fields.add(otherSlotRows);

    const unsigned records = fields.add(recordCount);
    std::size_t at = riser_map::firstRecord;
    for (unsigned r = 1; r <= records; ++r) {
        at = decodeRecord(fields, static_cast<std::uint8_t>(r), at);
    }
    fields.add(slotMapChecksum, at);
}

} // namespace zolt
