#include "capture/riser_map_layout.h"

#include "payload/riser_slot_map_fields.h"

#include <algorithm>

namespace capture {

namespace {

namespace field = zolt::riser_map;

class Walk {
public:
    explicit Walk(std::span<const std::uint8_t> blob) : blob_(blob) {
        layout_.isNumber.resize(blob.size());
    }

    RiserMapLayout layout() {
        numbers(0, field::descriptionOffset);
        text(field::descriptionOffset, field::descriptionLength);
        numbers(field::descriptionOffset + field::descriptionLength,
                field::firstRecord - field::descriptionOffset - field::descriptionLength);
        const unsigned records = at(field::recordCount);
        std::size_t start = field::firstRecord;
        for (unsigned i = 0; i < records && start < blob_.size(); ++i) {
            start += record(start);
        }
        if (start < blob_.size()) {
            layout_.checksum = start;
        }
        return std::move(layout_);
    }

private:
    // Returns the length that the record states.
    unsigned record(std::size_t start) {
        numbers(start, field::partNumberOffset); // the location stays, too
        text(start + field::partNumberOffset, field::partNumberLength);
        const std::size_t afterText = field::partNumberOffset + field::partNumberLength;
        const unsigned dsls = at(start + field::dslCount);
        const unsigned slots = at(start + field::firstDsl + dsls);
        const std::size_t end = field::firstDsl + dsls + 1 + field::slotSize * std::size_t{slots} +
                                1 + field::dslPayloadSize * std::size_t{dsls};
        numbers(start + afterText, end - afterText);
        return at(start + field::recordSize);
    }

    [[nodiscard]] unsigned at(std::size_t offset) const {
        return offset < blob_.size() ? blob_[offset] : 0;
    }

    void numbers(std::size_t offset, std::size_t length) {
        const std::size_t first = std::min(offset, blob_.size());
        const std::size_t last = std::min(offset + length, blob_.size());
        std::fill(layout_.isNumber.begin() + static_cast<std::ptrdiff_t>(first),
                  layout_.isNumber.begin() + static_cast<std::ptrdiff_t>(last), true);
    }

    void text(std::size_t offset, std::size_t length) {
        // A record of length 0 comes again and again.
        const bool isKnown = std::ranges::any_of(
            layout_.texts, [&](const RiserMapText& known) { return known.offset == offset; });
        if (offset < blob_.size() && !isKnown) {
            layout_.texts.push_back({offset, std::min(length, blob_.size() - offset)});
        }
    }

    std::span<const std::uint8_t> blob_;
    RiserMapLayout layout_;
};

} // namespace

RiserMapLayout riserMapLayout(std::span<const std::uint8_t> blob) {
    return Walk(blob).layout();
}

} // namespace capture
