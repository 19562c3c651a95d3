#include "capture/slots.h"

#include "cpld/picpwr_rows.h"

namespace capture {

namespace {

class SlotReader {
public:
    SlotReader(Observation& observation, std::uint8_t slot)
        : reader_(observation),
          base_(zolt::picpwrBlockAddress(slot)),
          block_(zolt::picpwrPrefix, slot, base_) {}

    void read(const zolt::PicpwrRegister& field) {
        reader_.both(block_.name(field.suffix), field.raw.from(base_));
    }

    void readDsls() {
        for (unsigned k = 0; k < zolt::picpwrDslCount; ++k) {
            const auto offset = static_cast<std::uint16_t>(zolt::picpwrDslOffset + k);
            reader_.raw(zolt::RawField::byte(offset).from(base_));
        }
    }

private:
    RegisterReader reader_;
    std::uint16_t base_;
    zolt::RegisterBlock block_;
};

// A register that delivers no byte does not end the report of a slot.
bool isEmptyOrUnread(const Effective& dstat) {
    return dstat.status != 0 || zolt::byteOf(dstat.value) == 0;
}

void readSlot(Observation& observation, std::uint8_t slot) {
    SlotReader reader(observation, slot);
    reader.read(zolt::picpwrDstat);
    if (isEmptyOrUnread(slotRegister(observation, slot, zolt::picpwrDstat))) {
        return;
    }
    for (const zolt::PicpwrRow& row : zolt::picpwrByteRows) {
        reader.read(row.field);
    }
    reader.read(zolt::picpwrPayloadOffset);
    reader.readDsls();
}

} // namespace

void readSlots(Observation& observation, const Progress& progress) {
    for (std::uint8_t slot = 1; slot <= zolt::picpwrCount; ++slot) {
        progress("slots", slot - 1U, zolt::picpwrCount);
        readSlot(observation, slot);
    }
}

Effective slotRegister(const Observation& observation, std::uint8_t slot,
                       const zolt::PicpwrRegister& field) {
    const std::uint16_t base = zolt::picpwrBlockAddress(slot);
    zolt::RegisterBlock block(zolt::picpwrPrefix, slot, base);
    return effective(observation, block.name(field.suffix), field.raw.from(base));
}

} // namespace capture
