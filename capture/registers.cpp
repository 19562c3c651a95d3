#include "capture/registers.h"

#include <algorithm>

namespace capture {

namespace {

void keepAtMost(std::size_t most, Bytes& bytes) {
    bytes.resize(std::min(bytes.size(), most));
}

} // namespace

void RegisterReader::named(std::string_view name) {
    const auto [found, isNew] = observation_->named.try_emplace(std::string(name));
    if (!isNew) {
        return;
    }
    Reading& reading = found->second;
    reading.status = zolt::readRegister(name, reading.bytes);
    // A failed read may leave bytes behind.
    keepAtMost(reading.status == 0 ? mostRegisterBytes : 0, reading.bytes);
}

void RegisterReader::raw(zolt::RawField field) {
    auto& readings = field.size == 2 ? observation_->rawWords : observation_->rawBytes;
    const auto [found, isNew] = readings.try_emplace(field.address);
    if (!isNew) {
        return;
    }
    const auto whole =
        field.size == 2 ? zolt::RawField::word(field.address) : zolt::RawField::byte(field.address);
    found->second.status = zolt::readRawField(whole, found->second.bytes);
}

Effective effective(const Observation& observation, std::string_view name, zolt::RawField field) {
    const Reading& named = observation.named.at(std::string(name));
    if (named.status == 0) {
        return {.value = named.bytes};
    }
    const auto& readings = field.size == 2 ? observation.rawWords : observation.rawBytes;
    const Reading& raw = readings.at(field.address);
    Effective seen{.status = raw.status, .value = raw.bytes};
    if (field.size == 1 && !seen.value.empty()) {
        seen.value[0] = field.extract(seen.value[0]);
    }
    return seen;
}

} // namespace capture
