#include "board/byte_text.h"

#include "board/number.h"

#include <algorithm>
#include <limits>
#include <string>

namespace board {

namespace {

// Takes the next word from the front of a line; empty when there is none.
std::string_view takeWord(std::string_view& line) {
    constexpr std::string_view blanks = " \t\r";
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    line.remove_prefix(word.size());
    return word;
}

// A dump starts with a line of column numbers and a line of dashes.
bool isDumpHeader(std::string_view line) {
    const std::string_view word = takeWord(line);
    return word == "+" || word.starts_with("----");
}

// A line of a dump starts with its address: "0x00002A01 = ".
void skipAddress(std::string_view& line) {
    std::string_view rest = line;
    const std::string_view address = takeWord(rest);
    constexpr std::string_view digits = "0123456789abcdefABCDEF";
    if (address.starts_with("0x") && address.size() > 2 &&
        address.find_first_not_of(digits, 2) == std::string_view::npos && takeWord(rest) == "=") {
        line = rest;
    }
}

std::optional<std::string_view> appendLine(std::string_view line, Bytes& bytes) {
    if (isDumpHeader(line)) {
        return std::nullopt;
    }
    skipAddress(line);
    for (auto word = takeWord(line); !word.empty(); word = takeWord(line)) {
        if (word == ":") {
            continue;
        }
        const auto byte =
            numberIn("0x" + std::string(word), 0, std::numeric_limits<std::uint8_t>::max());
        if (word.size() != 2 || !byte) {
            return word;
        }
        bytes.push_back(static_cast<std::uint8_t>(*byte));
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string_view> appendBytes(std::string_view text, Bytes& bytes) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (const auto wrong = appendLine(text.substr(0, end), bytes)) {
            return wrong;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::nullopt;
}

} // namespace board
