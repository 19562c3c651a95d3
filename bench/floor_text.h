// The text of a floor program. The program composes it in one buffer and writes it out where the
// tool does.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unistd.h>

namespace floor_program {

constexpr std::size_t longestText = std::size_t{64} * 1024;

class Text {
public:
    void add(std::string_view text) { end_ += text.copy(end_, text.size()); }
    void addDecimal(unsigned value) { end_ = std::to_chars(end_, end_ + 10, value).ptr; }
    void addTwoDigits(unsigned value) {
        *end_++ = static_cast<char>('0' + value / 10);
        *end_++ = static_cast<char>('0' + value % 10);
    }
    void addHexadecimalByte(std::uint8_t value) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        *end_++ = digits[value >> 4];
        *end_++ = digits[value & 0xF];
    }

    /// Writes the text that was added since the last call. Makes no system call without text.
    /// @return false when the write failed or was incomplete.
    bool handOut() {
        const auto size = end_ - text_.data();
        end_ = text_.data();
        return size == 0 ||
               ::write(STDOUT_FILENO, text_.data(), static_cast<std::size_t>(size)) == size;
    }

private:
    std::array<char, longestText> text_;
    char* end_ = text_.data();
};

} // namespace floor_program
