#include "zolt_board/finding.h"

#include <algorithm>
#include <cstddef>

namespace zolt_board {

namespace {

constexpr FindingKind kinds[] = {
    {Kind::absentSlotWithPayload, Severity::warning, "absent-slot-with-payload",
     "The slot has a payload or an OEM area, but its DSTAT is 0: no module was discovered.",
     "Look whether the module is seated and has power, and run the discovery again."},
    {Kind::presentSlotWithoutPayload, Severity::warning, "present-slot-without-payload",
     "DSTAT is 3, so the discovery of the slot has ended, but there are only zeros at the place of "
     "its payload.",
     "Read the module's memory directly. Program it if it is empty."},
    {Kind::classRegisterDiffers, Severity::error, "class-register-differs",
     "The slot's module class register and the payload name different classes.",
     "Run the discovery of the slot again. If that changes nothing, the module's memory belongs to "
     "another module."},
    {Kind::payloadOutsideBlock, Severity::error, "payload-outside-block",
     "The payload begins or ends behind the payload block.",
     "Look at the slot's payload offset register: the discovery has computed a wrong place."},
    {Kind::payloadShorterThanStated, Severity::error, "payload-shorter-than-stated",
     "The payload gives itself more bytes than it has, or than readers fetch. They take other "
     "bytes "
     "for the rest, or get none.",
     "Correct the length in the module's memory, or program the missing bytes. A payload has at "
     "most "
     "247 bytes."},
    {Kind::payloadLongerThanStated, Severity::warning, "payload-longer-than-stated",
     "The payload has more bytes than it gives itself. Readers take the next ones for an OEM area.",
     "Correct the length in the module's memory."},
    {Kind::payloadFieldsBeyondSize, Severity::error, "payload-fields-beyond-size",
     "The header or the backplane descriptor ends behind the length that the payload gives itself.",
     "Correct the length in the module's memory."},
    {Kind::endPointsBeyondSize, Severity::error, "end-points-beyond-size",
     "The payload states more end points than fit into the length that it gives itself.",
     "Correct the number of end points, or the length, in the module's memory."},
    {Kind::checksumOutside, Severity::error, "checksum-outside",
     "The place of the checksum lies in the fields in front of it, or behind the end of the data.",
     "Correct the length in the module's memory, or the lengths of the riser map's records."},
    {Kind::payloadsOverlap, Severity::error, "payloads-overlap",
     "The payloads and OEM areas of two slots share bytes.",
     "Look at the payload offset registers of both slots, and at the lengths of the payload in "
     "front."},
    {Kind::oemAreaTooShort, Severity::error, "oem-area-too-short",
     "The OEM area is too short for its length, its number of descriptors and its checksum.",
     "Correct the area's length in the module's memory. 0 stands for no area."},
    {Kind::oemAreaNotFetched, Severity::error, "oem-area-not-fetched",
     "The OEM area ends behind the bytes that readers fetch, or get.",
     "Correct the lengths of payload and area in the module's memory. Together they have at most "
     "375 bytes."},
    {Kind::oemDescriptorTooShort, Severity::error, "oem-descriptor-too-short",
     "An OEM descriptor gives itself fewer bytes than the fields of its type have.",
     "Correct the descriptor's length in the module's memory."},
    {Kind::oemDescriptorsBeyondArea, Severity::error, "oem-descriptors-beyond-area",
     "The OEM area does not hold the number of descriptors that it states.",
     "Correct the number of descriptors, their lengths, or that of the area, in the module's "
     "memory."},
    {Kind::riserRecordBeyondMap, Severity::error, "riser-record-beyond-map",
     "A record of the riser slot mapping ends behind the mapping.",
     "Correct the number of records, or the counts in the record, in the firmware's data."},
    {Kind::riserRecordSizeDiffers, Severity::error, "riser-record-size-differs",
     "The length that a record gives itself is not that of its counts. Readers look for the next "
     "record at a wrong place.",
     "Correct the record's length in the firmware's data. Then look at the records behind it."},
    {Kind::riserRouteCountDiffers, Severity::warning, "riser-route-count-differs",
     "The number of DSL payloads of a record is not its number of DSLs.",
     "Correct the number in the firmware's data. Readers decode one payload for each DSL."},
    {Kind::dslTypeOutOfRange, Severity::error, "dsl-type-out-of-range",
     "A DSL of the riser slot mapping has an unknown type. Its route cannot be shown.",
     "Correct the type in the firmware's data: 1, 2 or 3."},
    {Kind::picpwrOutOfRange, Severity::error, "picpwr-out-of-range",
     "A record, a node or a control register names a PICPWR slot that does not exist.",
     "Correct the number at its source: the firmware's data, the system information or the CPLD."},
    {Kind::textWithoutEnd, Severity::warning, "text-without-end",
     "A text fills its field, so that no NUL ends it. A reader may run on behind the field.",
     "Shorten the text by one character."},
    {Kind::viewsDisagree, Severity::error, "views-disagree",
     "A register delivers one value by its name and another by its address.",
     "Read both again. If the difference stays, the HAL's configuration does not fit the CPLD."},
    {Kind::nodeBusMissing, Severity::error, "node-bus-missing",
     "The number of a node's physical bus is one that no bus of Linux can have.",
     "Correct the node in the system information."},
    {Kind::nodeCountDiffers, Severity::error, "node-count-differs",
     "A node states another number of sub nodes than its list has.",
     "Correct the node in the system information."},
    {Kind::objectClassDiffers, Severity::error, "object-class-differs",
     "The service publishes a module below a type that does not go with the class in its payload.",
     "Run the discovery again, and restart the service."},
    {Kind::propertyMissing, Severity::error, "property-missing",
     "An object of the service lacks a property that readers of its interface ask for.",
     "Look into the service's log, and restart the service."},
    {Kind::propertyTypeDiffers, Severity::error, "property-type-differs",
     "A property of the service has another type than readers ask for.",
     "The service and its readers are of different versions: update the older one."},
    {Kind::propertyValueDiffers, Severity::error, "property-value-differs",
     "A property of the service differs from the field of the payload.",
     "Restart the service, so that it reads the payload again."},
    {Kind::objectWithoutSlot, Severity::warning, "object-without-slot",
     "The service publishes a module that no discovered slot has.",
     "Look whether the module was removed, and restart the service."},
    {Kind::slotWithoutObject, Severity::warning, "slot-without-object",
     "The service publishes modules of a class, but not the module of this class in the slot.",
     "Look into the service's log, and restart the service."},
};

static_assert([] {
    std::size_t index = 0;
    return std::ranges::all_of(kinds, [&](const FindingKind& row) {
        return static_cast<std::size_t>(row.kind) == index++;
    });
}());
static_assert(std::size(kinds) == static_cast<std::size_t>(Kind::slotWithoutObject) + 1);

} // namespace

std::span<const FindingKind> findingKinds() {
    return kinds;
}

const FindingKind& kindOf(const Finding& finding) {
    return kinds[static_cast<std::size_t>(finding.kind)];
}

std::string_view severityName(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

std::string lineOf(const Finding& finding) {
    const FindingKind& kind = kindOf(finding);
    std::string line(severityName(kind.severity));
    line.append(": ").append(kind.identifier).append(": ").append(finding.place);
    line.append(": ").append(finding.what).append("; expected ").append(finding.expected);
    return line;
}

} // namespace zolt_board
