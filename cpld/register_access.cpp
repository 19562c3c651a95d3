#include "cpld/register_access.h"

#include "console/number_text.h"
#include "console/output.h"
#include "platform/cpld_driver.h"
#include "platform/hal.h"

#include <array>
#include <string>

namespace zolt {

std::int32_t readRegister(std::string_view name, RegisterValue& value) {
    std::uint32_t size = 0; // ignored: a register's bytes are those in the vector
    return readArea(name, value, size);
}

std::int32_t readArea(std::string_view name, RegisterValue& value, std::uint32_t& size) {
    size = 0;
    flush();
    return ReadIO_Str(std::string(name), value, &size);
}

std::int32_t readRawField(RawField raw, RegisterValue& value) {
    std::array<std::uint8_t, 2> bytes{};
    flush();
    if (raw.size == 1) {
        const std::int32_t status = cpld_read_device(bytes.data(), raw.address, 1);
        if (status == 0) {
            value.push_back(raw.extract(bytes[0]));
        }
        return status;
    }
    const std::int32_t status = cpld_read_block_device(bytes.data(), raw.address, 2, 1);
    if (status == 0) {
        value.insert(value.end(), bytes.begin(), bytes.end());
    }
    return status;
}

std::int32_t readField(std::string_view name, RawField raw, RegisterValue& value) {
    value.clear();
    if (readRegister(name, value) == 0) {
        return 0;
    }
    value.clear(); // a failed named read may leave bytes behind
    return readRawField(raw, value);
}

RegisterBlock::RegisterBlock(std::string_view prefix, unsigned instance, std::uint16_t base)
    : base_(base) {
    std::array<char, longestNumber> digits;
    const std::string_view number(digits.data(), appendDecimal(digits.data(), instance));
    prefixLength_ = name(prefix).size();
    prefixLength_ = name(number).size();
}

} // namespace zolt
