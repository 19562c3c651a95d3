// The buffer in front of standard output. All text that the tool prints passes through it.
//
// The tool writes the buffer out before it calls a platform library, a bus device or the system
// bus, and before it waits for the operator. Such a call may never return, or may end the tool; the
// last line on the console then shows where. Between two such calls the tool writes only when the
// buffer is full, so a report takes few writes.
//
// A failed write changes neither the exit status nor the further texts. A pipe without a reader
// ends the tool by SIGPIPE, unless the tool started with this signal ignored.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zolt {

class StandardOutput {
public:
    /// The most bytes that room() gives. The listing of a well-formed payload fits: one write.
    static constexpr std::size_t capacity = std::size_t{64} * 1024;

    constexpr StandardOutput() = default;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() { flush(); }

    /// Returns a place to compose up to @p size bytes, at most the capacity. The text counts only
    /// after finish().
    [[nodiscard]] char* room(std::size_t size) {
        if (size > capacity - used_) [[unlikely]] {
            writeOut();
        }
        return buffer_.data() + used_;
    }

    /// Takes over the text that was composed from the place of room() up to @p end.
    void finish(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.data()); }

    /// Prints text that is already laid out, of any length.
    void write(std::string_view text);

    /// Writes all text to the descriptor. Makes no system call when there is no text.
    void flush() {
        if (used_ != 0) {
            writeOut();
        }
    }

private:
    void writeOut();

    std::size_t used_ = 0;
    std::array<char, capacity> buffer_{}; // last: a short text shares a page with used_
};

extern StandardOutput standardOutput;

} // namespace zolt
