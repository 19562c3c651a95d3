// Findings of the OEM areas: whether they hold their descriptors.
#include "zolt_board/joined.h"
#include "zolt_board/payload_reading.h"
#include "zolt_board/subjects.h"

#include <algorithm>
#include <set>
#include <string>

namespace zolt_board {

namespace {

class OemAreaCheck {
public:
    OemAreaCheck(const PayloadReading& payload, Findings& findings)
        : place_(payload.slot->name() + " OEM area"),
          size_(payload.oemAreaSize()),
          start_(payload.statedSize),
          fetched_(payload.bytes.size()),
          findings_(&findings) {
        if (size_ != 0) {
            area_ = payload.bytes.subspan(start_, std::min(size_, fetched_ - start_));
        }
    }

    void check() {
        if (size_ == 0) {
            return;
        }
        if (size_ <= board::oemHeaderSize) {
            add(Kind::oemAreaTooShort, joined("the area states ", counted(size_, "byte")),
                "room for its length, its number of descriptors and its checksum, 3 bytes");
            return;
        }
        if (area_.size() < size_) {
            add(Kind::oemAreaNotFetched,
                joined("the area ends with byte ", start_ + size_ - 1,
                       " behind the start of the payload"),
                joined("an end within the ", fetched_, " bytes that readers get"));
        }
        checkDescriptors();
    }

private:
    void add(Kind kind, std::string what, std::string expected) {
        findings_->push_back({kind, place_, std::move(what), std::move(expected)});
    }

    // Follows the lengths of the descriptors, as readers do, up to the first one that is wrong.
    // Bytes that readers do not get are not looked at.
    void checkDescriptors() {
        const std::size_t count = area_.size() < board::oemHeaderSize ? 0 : area_[1];
        const std::size_t end = size_ - 1; // the place of the checksum
        std::size_t at = board::oemHeaderSize;
        for (std::size_t number = 1; number <= count; ++number) {
            const std::size_t behindHeader = at + board::oemHeaderSize;
            if (behindHeader > end) {
                addBeyond(number, count, behindHeader);
                return;
            }
            if (behindHeader > area_.size()) {
                return;
            }
            const std::uint8_t type = area_[at];
            const std::size_t size = area_[at + 1];
            const std::size_t needed = board::oemDescriptorSize(type);
            if (size < needed) {
                add(Kind::oemDescriptorTooShort,
                    joined("descriptor ", number, " of type ", type, " states ",
                           counted(size, "byte")),
                    joined("at least ", needed, " bytes"));
                return;
            }
            at += size;
            if (at > end) {
                addBeyond(number, count, at);
                return;
            }
        }
    }

    void addBeyond(std::size_t number, std::size_t count, std::size_t end) {
        add(Kind::oemDescriptorsBeyondArea,
            joined("descriptor ", number, " of ", count, " ends with byte ", end - 1,
                   " of the area"),
            joined("an end before the checksum at byte ", size_ - 1));
    }

    std::string place_;
    std::size_t size_;  ///< as stated
    std::size_t start_; ///< from the start of the payload on
    std::size_t fetched_;
    std::span<const std::uint8_t> area_{}; ///< what readers get of it
    Findings* findings_;
};

} // namespace

void checkOemAreas(const ReaderView& board, Findings& findings) {
    std::set<std::size_t> checked;
    for (const PayloadReading& payload : payloadsOf(board)) {
        if (checked.insert(payload.offset).second) {
            OemAreaCheck(payload, findings).check();
        }
    }
}

} // namespace zolt_board
