#include "standin/board/device_type.h"

#include "standin/board/number.h"

#include "i2c/device_types.h"

namespace standin {

std::optional<std::uint8_t> deviceTypeCode(std::string_view word) {
    if (const auto code = numberIn(word, 0, zolt::deviceTypeCount - 1)) {
        return static_cast<std::uint8_t>(*code);
    }
    for (unsigned code = 0; code < zolt::deviceTypeCount; ++code) {
        if (!word.empty() && zolt::deviceTypeName(code) == word) {
            return static_cast<std::uint8_t>(code);
        }
    }
    return std::nullopt;
}

} // namespace standin
