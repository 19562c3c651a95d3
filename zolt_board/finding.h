// Findings: what is wrong with the data that a board shows.
//
// A finding rests on what the board itself says: two statements of the board contradict each other,
// or one of them cannot be. The values of checksums are not judged, because no board says how they
// are computed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zolt_board {

enum class Severity : std::uint8_t {
    error,   ///< a reader of the board shows wrong values, or cannot show some
    warning, ///< a reader shows all values, but the board contradicts itself
};

/// The kinds of findings, in the order of findingKinds().
enum class Kind : std::uint8_t {
    absentSlotWithPayload,
    presentSlotWithoutPayload,
    classRegisterDiffers,
    payloadOutsideBlock,
    payloadShorterThanStated,
    payloadLongerThanStated,
    payloadFieldsBeyondSize,
    endPointsBeyondSize,
    checksumOutside,
    payloadsOverlap,
    oemAreaTooShort,
    oemAreaNotFetched,
    oemDescriptorTooShort,
    oemDescriptorsBeyondArea,
    riserRecordBeyondMap,
    riserRecordSizeDiffers,
    riserRouteCountDiffers,
    dslTypeOutOfRange,
    picpwrOutOfRange,
    textWithoutEnd,
    viewsDisagree,
    nodeBusMissing,
    nodeCountDiffers,
    objectClassDiffers,
    propertyMissing,
    propertyTypeDiffers,
    propertyValueDiffers,
    objectWithoutSlot,
    slotWithoutObject,
};

/// A kind of findings, for people and for programs. The identifier never changes.
struct FindingKind {
    Kind kind;
    Severity severity;
    std::string_view identifier; ///< small letters and hyphens
    std::string_view meaning;    ///< sentences
    std::string_view remedy;     ///< sentences
};

struct Finding {
    Kind kind;
    std::string place;    ///< a part of the board: "slot 5 payload"
    std::string what;     ///< what the board says there
    std::string expected; ///< what would be right

    bool operator==(const Finding&) const = default;
};

using Findings = std::vector<Finding>;

/// All kinds, in the order of the manual.
[[nodiscard]] std::span<const FindingKind> findingKinds();

[[nodiscard]] const FindingKind& kindOf(const Finding& finding);

/// "error" or "warning".
[[nodiscard]] std::string_view severityName(Severity severity);

/// The finding as one line, without a newline: "error: IDENTIFIER: PLACE: WHAT; expected EXPECTED".
/// The line has no control characters.
[[nodiscard]] std::string lineOf(const Finding& finding);

} // namespace zolt_board
