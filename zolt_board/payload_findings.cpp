// Findings of the CIR payloads: whether their fields fit into their lengths, and the payloads into
// the payload block.
#include "zolt_board/joined.h"
#include "zolt_board/payload_reading.h"
#include "zolt_board/subjects.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

namespace zolt_board {

namespace {

class PayloadCheck {
public:
    PayloadCheck(const PayloadReading& payload, Findings& findings)
        : payload_(&payload), findings_(&findings) {}

    void check() {
        checkSize();
        checkFields();
        checkEndPoints();
        checkChecksum();
    }

private:
    void add(Kind kind, std::string what, std::string expected) {
        findings_->push_back(
            {kind, payload_->slot->name() + " payload", std::move(what), std::move(expected)});
    }

    [[nodiscard]] std::string stated() const {
        return joined("the payload states ", counted(payload_->statedSize, "byte"));
    }

    void checkSize() {
        const std::size_t size = payload_->statedSize;
        const std::size_t got = std::min<std::size_t>(payload_->bytes.size(), payloadFetch);
        if (payload_->described && *payload_->described != size) {
            const bool isShorter = *payload_->described < size;
            add(isShorter ? Kind::payloadShorterThanStated : Kind::payloadLongerThanStated,
                joined(stated(), " and has ", *payload_->described), "the stated bytes");
        } else if (size > got) {
            add(Kind::payloadShorterThanStated, joined(stated(), ", readers get ", got),
                "the stated bytes");
        }
    }

    void checkFields() {
        if (payload_->fieldsEnd > payload_->statedSize) {
            const bool hasBackplane = payload_->fieldsEnd > board::payloadHeaderSize;
            add(Kind::payloadFieldsBeyondSize, stated(),
                joined(hasBackplane ? "room for the header and the backplane descriptor, "
                                    : "room for the header, ",
                       payload_->fieldsEnd, " bytes"));
        }
    }

    void checkEndPoints() {
        if (payload_->endPoints != 0 && payload_->endPointsEnd() > payload_->statedSize) {
            add(Kind::endPointsBeyondSize,
                joined("end point ", payload_->endPoints, " ends with byte ",
                       payload_->endPointsEnd() - 1, ", ", stated()),
                "end points within the stated length");
        }
    }

    // A checksum behind the bytes that a payload has is a matter of its length, and fields behind
    // the length are a matter of the fields.
    void checkChecksum() {
        const auto place = payload_->checksumPlace();
        if (!place) {
            add(Kind::checksumOutside, "the payload states no length, so it has no last byte",
                "the checksum in the last byte");
            return;
        }
        // Only a length of 8 leaves no room: the fields behind the header have an odd number of
        // bytes with the header, so they never fill the length to its end.
        if (*place < board::payloadHeaderSize) {
            add(Kind::checksumOutside,
                joined("byte ", *place, ", the place of the checksum, is one of the header"),
                joined("the checksum at byte ", board::payloadHeaderSize, " or behind"));
        } else if (*place >= payload_->statedSize) {
            add(Kind::checksumOutside, joined("the checksum is byte ", *place, ", ", stated()),
                "the checksum within the stated length");
        }
    }

    const PayloadReading* payload_;
    Findings* findings_;
};

// A payload of which readers get no whole header.
void checkHeader(const SlotReading& slot, std::size_t room, Findings& findings) {
    if (slot.payload && slot.payload->size() < board::payloadHeaderSize &&
        *slot.payloadOffset + board::payloadHeaderSize <= room) {
        findings.push_back({Kind::payloadShorterThanStated, slot.name() + " payload",
                            joined("readers get ", counted(slot.payload->size(), "byte")),
                            joined("a header of ", board::payloadHeaderSize, " bytes")});
    }
}

// The bytes of the block that a slot's payload and OEM area take.
struct Extent {
    const SlotReading* slot;
    std::size_t start;
    std::size_t end;

    [[nodiscard]] std::string text() const {
        return joined("payload offsets ", start, " to ", end - 1);
    }
};

std::vector<Extent> extentsOf(const ReaderView& board) {
    std::vector<Extent> extents;
    for (const SlotReading& slot : board.slots()) {
        if (!slot.payload) {
            continue;
        }
        Extent extent{&slot, *slot.payloadOffset, *slot.payloadOffset + board::payloadHeaderSize};
        if (const auto payload = payloadOf(slot)) {
            extent.end =
                std::max(extent.end, extent.start + payload->statedSize + payload->oemAreaSize());
            extents.push_back(extent);
        } else if (extent.end > board.payloadRoom().size()) {
            extents.push_back(extent);
        }
    }
    std::ranges::stable_sort(extents, {}, &Extent::start);
    return extents;
}

// One finding for each slot whose bytes begin within those of another one.
void checkPlaces(const ReaderView& board, Findings& findings) {
    const std::size_t room = board.payloadRoom().size();
    const Extent* before = nullptr; // of all extents so far, that with the last end
    const std::vector<Extent> extents = extentsOf(board);
    for (const Extent& extent : extents) {
        const std::string place = extent.slot->name() + " payload";
        if (extent.end > room) {
            findings.push_back(
                {Kind::payloadOutsideBlock, place,
                 joined("payload and OEM area are at ", extent.text()),
                 joined("a place within the ", room, " bytes of the payload block")});
        }
        if (before != nullptr && extent.start < before->end) {
            findings.push_back({Kind::payloadsOverlap, place,
                                joined("payload and OEM area are at ", extent.text(), ", those of ",
                                       before->slot->name(), " at ", before->text()),
                                "bytes of its own for each slot"});
        }
        if (before == nullptr || extent.end > before->end) {
            before = &extent;
        }
    }
}

} // namespace

void checkPayloads(const ReaderView& board, Findings& findings) {
    for (const SlotReading& slot : board.slots()) {
        checkHeader(slot, board.payloadRoom().size(), findings);
    }
    // Slots at one place are a matter of the places.
    std::set<std::size_t> checked;
    for (const PayloadReading& payload : payloadsOf(board)) {
        if (checked.insert(payload.offset).second) {
            PayloadCheck(payload, findings).check();
        }
    }
    checkPlaces(board, findings);
}

} // namespace zolt_board
