#include "zolt_board/joined.h"

#include <algorithm>

namespace zolt_board {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

} // namespace

std::string inHex(std::uint32_t number, std::size_t digits) {
    std::string text;
    for (; number != 0 || text.size() < digits; number >>= 4) {
        text.insert(text.begin(), hexDigits[number & 0xF]);
    }
    return text.insert(0, "0x");
}

std::string bytesText(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t mostShown = 8;
    if (bytes.empty()) {
        return "no bytes";
    }
    if (bytes.size() == 1) {
        return inHex(bytes[0], 2);
    }
    std::string text;
    for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), mostShown))) {
        text.append(text.empty() ? "" : " ");
        text += hexDigits[byte >> 4];
        text += hexDigits[byte & 0xF];
    }
    return bytes.size() > mostShown ? text.append(" ...") : text;
}

} // namespace zolt_board
