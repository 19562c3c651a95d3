#include "zolt_board/joined.h"

#include "console/number_text.h"

#include <algorithm>

namespace zolt_board {

namespace {

constexpr const char* hexDigits = "0123456789ABCDEF";

} // namespace

std::string inHex(std::uint32_t number, unsigned digits) {
    std::string text("0x");
    text.resize(text.size() + zolt::longestNumber);
    const char* const end = zolt::appendHexadecimal(text.data() + 2, number, digits, hexDigits);
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
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
