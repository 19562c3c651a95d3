#include "capture/payloads.h"

#include "capture/slots.h"
#include "payload/payload_source.h"
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <algorithm>
#include <exception>
#include <memory>

namespace capture {

namespace {

// The HAL's object of the payload block. The program asks for the object up to twice, because the
// library may still be loading its configuration at the first call.
class PayloadBlock {
public:
    PayloadBlock() {
        for (int asks = 0; object_ == nullptr && asks < 2; ++asks) {
            object_.reset(HAL_cfgdata::ReadHALConfig(zolt::payloadBlockName));
        }
    }
    PayloadBlock(const PayloadBlock&) = delete;
    PayloadBlock& operator=(const PayloadBlock&) = delete;
    ~PayloadBlock() {
        try {
            (void)release();
        } catch (const std::exception&) {
            // Another exception, which a read has thrown, already tells of the failure.
        }
    }

    [[nodiscard]] bool isFound() const { return object_ != nullptr; }

    [[nodiscard]] Reading read(std::uint32_t length, std::uint16_t offset) {
        Reading reading;
        reading.status =
            object_->ReadIO(reading.bytes, length, offset + zolt::payloadIndexOfOffset0);
        // A read that fails leaves garbage. A read that succeeds delivers at most the length.
        reading.bytes.resize(
            reading.status == 0 ? std::min<std::size_t>(reading.bytes.size(), length) : 0);
        return reading;
    }

    // Removes the interrupt callback, and destroys the object even if that throws.
    std::optional<HalObjectReading> release() {
        const std::unique_ptr<HAL_cfgbase> object = std::move(object_);
        if (object == nullptr) {
            return std::nullopt;
        }
        HalObjectReading reading{.interruptCallback = object->IsInterruptCallbackRegistered()};
        if (reading.interruptCallback) {
            reading.unregisterStatus = object->UnregisterInterruptCallback();
        }
        return reading;
    }

private:
    std::unique_ptr<HAL_cfgbase> object_;
};

Reading readRaw(std::uint16_t offset, std::uint32_t length) {
    Reading reading{.bytes = Bytes(length)};
    reading.status =
        cpld_read_block_device(reading.bytes.data(), zolt::payloadRawStart + offset, length, 1);
    if (reading.status != 0) {
        reading.bytes.clear();
    }
    return reading;
}

class PayloadReader {
public:
    PayloadReader(Observation& observation, PayloadBlock& block)
        : observation_(&observation), block_(&block) {}

    void read(std::uint8_t slot, std::uint16_t offset) {
        const PayloadReading whole = reading(slot, offset, zolt::oemAreaFetch, nullptr);
        observation_->payloads.push_back(whole);
        if (isAnsweredByHal(whole) || !showsCirPayload(slot)) {
            return;
        }
        // Without the object, the bytes that were read raw are all that there is.
        const bool isReadRaw = whole.raw->status == 0;
        if (whole.foundObject || !isReadRaw) {
            observation_->payloads.push_back(
                reading(slot, offset, zolt::cirPayloadFetch, isReadRaw ? &*whole.raw : nullptr));
        }
    }

private:
    static bool isAnsweredByHal(const PayloadReading& reading) {
        return reading.foundObject && reading.hal.status == 0;
    }

    [[nodiscard]] bool showsCirPayload(std::uint8_t slot) const {
        const auto read = slotRegister(*observation_, slot, zolt::picpwrModuleClass);
        return read.status == 0 && zolt::byteOf(read.value).value_or(0) != 0;
    }

    // Returns the reading of another slot at the same place, or reads. `longer` has the raw bytes
    // from the same place on.
    [[nodiscard]] PayloadReading reading(std::uint8_t slot, std::uint16_t offset,
                                         std::uint32_t length, const Reading* longer) const {
        const auto same =
            std::ranges::find_if(observation_->payloads, [&](const PayloadReading& earlier) {
                return earlier.offset == offset && earlier.length == length;
            });
        if (same != observation_->payloads.end()) {
            PayloadReading copy = *same;
            copy.slot = slot;
            return copy;
        }
        PayloadReading fresh{.slot = slot, .offset = offset, .length = length};
        fresh.foundObject = block_->isFound();
        if (fresh.foundObject) {
            fresh.hal = block_->read(length, offset);
        }
        if (!isAnsweredByHal(fresh)) {
            fresh.raw = longer == nullptr ? readRaw(offset, length) : *longer;
            fresh.raw->bytes.resize(std::min<std::size_t>(fresh.raw->bytes.size(), length));
        }
        return fresh;
    }

    Observation* observation_;
    PayloadBlock* block_;
};

struct Place {
    std::uint8_t slot;
    std::uint16_t offset;
};

// The slots whose payload the reports read. A missing byte of DSTAT or of the offset ends a report.
std::vector<Place> placesOf(const Observation& observation) {
    std::vector<Place> places;
    for (std::uint8_t slot = 1; slot <= zolt::picpwrCount; ++slot) {
        const Effective dstat = slotRegister(observation, slot, zolt::picpwrDstat);
        if (dstat.status != 0 || zolt::byteOf(dstat.value).value_or(0) == 0) {
            continue;
        }
        const Effective offset = slotRegister(observation, slot, zolt::picpwrPayloadOffset);
        const auto word = zolt::wordOf(offset.value);
        if (offset.status == 0 && word) {
            places.push_back({slot, *word});
        }
    }
    return places;
}

} // namespace

void readPayloads(Observation& observation, const Progress& progress) {
    const std::vector<Place> places = placesOf(observation);
    if (places.empty()) {
        return;
    }
    PayloadBlock block;
    PayloadReader reader(observation, block);
    unsigned done = 0;
    for (const Place& place : places) {
        progress("payloads", done++, static_cast<unsigned>(places.size()));
        reader.read(place.slot, place.offset);
    }
    observation.payloadBlock = block.release();
}

} // namespace capture
