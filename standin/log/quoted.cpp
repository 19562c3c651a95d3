#include "standin/log/quoted.h"

#include <string_view>

namespace standin {

std::string quoted(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "\"";
    for (const std::uint8_t byte : bytes) {
        const bool isPlain = byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\';
        if (isPlain) {
            text += static_cast<char>(byte);
        } else {
            text.append({'\\', 'x', digits[byte >> 4], digits[byte & 0xF]});
        }
    }
    return text.append("\"");
}

} // namespace standin
