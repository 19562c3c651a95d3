#include "board/device_type_word.h"

#include "i2c/device_types.h"

namespace board {

namespace {

bool hasNameOfItsOwn(std::uint8_t code) {
    const std::string name = zolt::deviceTypeName(code);
    for (unsigned other = 0; other < zolt::deviceTypeCount; ++other) {
        if (other != code && zolt::deviceTypeName(other) == name) {
            return false;
        }
    }
    return !name.empty();
}

} // namespace

WrittenValue writtenDeviceType(std::uint8_t code) {
    if (hasNameOfItsOwn(code)) {
        return zolt::deviceTypeName(code);
    }
    return WrittenNumber{code};
}

std::string deviceTypeWord(std::uint8_t code) {
    return hasNameOfItsOwn(code) ? zolt::deviceTypeName(code) : std::to_string(code);
}

} // namespace board
