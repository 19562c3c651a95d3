#include "console/hex_dump.h"

#include "console/output.h"

#include <algorithm>
#include <array>
#include <span>

namespace zolt {

namespace {

constexpr std::size_t lineBytes = 16;
// "0x", 16 digits and " = "; 16 bytes of 3 characters; ": " and the line's end.
constexpr std::size_t longestLine = 21 + 3 * lineBytes + 3;

// The text of each byte value: two digits and a blank. With a fourth character, one store of four
// bytes copies the text.
constexpr auto byteTexts = []() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<std::array<char, 4>, 256> texts{};
    for (std::size_t value = 0; value < texts.size(); ++value) {
        texts[value] = {digits[value >> 4], digits[value & 0xF], ' ', ' '};
    }
    return texts;
}();

char* appendByte(char* end, std::uint8_t value) {
    std::copy_n(byteTexts[value].data(), 4, end);
    return end + 3;
}

char* appendAddress(char* end, std::uint64_t address) {
    *end++ = '0';
    *end++ = 'x';
    int digits = 8;
    while (digits < 16 && (address >> (4 * digits)) != 0) {
        ++digits;
    }
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        *end++ = byteTexts[(address >> shift) & 0xF][1];
    }
    return std::copy_n(" = ", 3, end);
}

char* appendLine(char* end, std::uint64_t address, std::span<const std::uint8_t> bytes) {
    end = appendAddress(end, address);
    const auto front = bytes.first(std::min(bytes.size(), lineBytes / 2));
    for (const std::uint8_t value : front) {
        end = appendByte(end, value);
    }
    if (front.size() == lineBytes / 2) {
        end = std::copy_n(": ", 2, end);
    }
    for (const std::uint8_t value : bytes.subspan(front.size())) {
        end = appendByte(end, value);
    }
    if (bytes.size() == lineBytes) {
        *end++ = '\n';
    }
    return end;
}

} // namespace

void printHexDump(std::uint64_t baseOffset, const std::vector<std::uint8_t>& bytes,
                  std::uint32_t byteCount) {
    write("\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
          "--------------------------------------------------------------\n");

    auto rest = std::span(bytes).first(std::min<std::size_t>(byteCount, bytes.size()));
    std::uint64_t address = baseOffset;
    while (!rest.empty()) {
        const auto line = rest.first(std::min(rest.size(), lineBytes));
        standardOutput.finish(appendLine(standardOutput.room(longestLine), address, line));
        address += line.size();
        rest = rest.subspan(line.size());
    }
    write("\n\n");
}

} // namespace zolt
