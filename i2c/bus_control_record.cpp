#include "i2c/bus_control_record.h"

#include <algorithm>

namespace zolt {

namespace {

constexpr std::string_view magic = "TESK";
constexpr BusNumber commandField{4};

} // namespace

BusControlRecord::BusControlRecord(BusCommand command) {
    std::ranges::copy(magic, bytes_.begin());
    set(commandField, static_cast<std::uint32_t>(command));
}

void BusControlRecord::set(BusNumber field, std::uint32_t value) {
    for (std::size_t i = 0; i < sizeof(value); ++i) {
        bytes_[field.offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

void BusControlRecord::set(BusText field, std::string_view text) {
    std::ranges::copy(text.substr(0, busTextSize - 1), bytes_.begin() + field.offset);
}

std::uint32_t busNumberAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < sizeof(value); ++i) {
        value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    }
    return value;
}

} // namespace zolt
