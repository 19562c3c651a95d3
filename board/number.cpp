#include "board/number.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace board {

std::optional<std::int64_t> numberIn(std::string_view text, std::int64_t lowest,
                                     std::int64_t highest) {
    const bool negative = text.starts_with('-');
    if (negative) {
        text.remove_prefix(1);
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    std::uint32_t digits = 0; // no number of a board needs more than 32 bits and a sign
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), digits, hexadecimal ? 16 : 10);
    const std::int64_t number = negative ? -std::int64_t{digits} : std::int64_t{digits};
    if (error != std::errc() || end != text.data() + text.size() || number < lowest ||
        number > highest) {
        return std::nullopt;
    }
    return number;
}

std::string addressText(std::int64_t address) {
    std::array<char, 8> text{};
    (void)std::snprintf(text.data(), text.size(), "0x%04X", static_cast<unsigned>(address));
    return text.data();
}

} // namespace board
