#include "cpld/register_access.h"

#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <array>
#include <charconv>
#include <utility>

namespace zolt {

std::string registerName(std::string_view prefix, unsigned instance, std::string_view suffix) {
    std::array<char, 10> digits;
    const char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), instance).ptr;
    const std::string_view number(digits.data(), end);
    std::string name;
    name.reserve(prefix.size() + number.size() + suffix.size());
    name.append(prefix).append(number).append(suffix);
    return name; // by itself: what append returns would be copied
}

std::int32_t readRegister(std::string name, RegisterValue& value) {
    // The size is what was delivered, and so is the vector's: single registers need only one.
    std::uint32_t size = 0;
    return readArea(std::move(name), value, size);
}

std::int32_t readArea(std::string name, RegisterValue& value, std::uint32_t& size) {
    size = 0;
    return ReadIO_Str(std::move(name), value, &size);
}

std::int32_t readRawField(const RawField& raw, RegisterValue& value) {
    std::array<std::uint8_t, 2> bytes{};
    const std::int32_t status = raw.size == 1
                                    ? cpld_read_device(bytes.data(), raw.address, 1)
                                    : cpld_read_block_device(bytes.data(), raw.address, 2, 1);
    if (status != 0) {
        return status;
    }
    for (std::size_t i = 0; i < raw.size; ++i) {
        value.push_back(raw.extract(bytes[i]));
    }
    return 0;
}

std::int32_t readField(std::string name, const RawField& raw, RegisterValue& value) {
    value.clear();
    if (readRegister(std::move(name), value) == 0) {
        return 0;
    }
    value.clear(); // whatever a failed read left behind is not the register's value
    return readRawField(raw, value);
}

} // namespace zolt
