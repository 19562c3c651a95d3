// The buffer in front of standard output: everything that the tool prints passes through here.
//
// The buffer is handed out before the tool asks anybody else: the platform's libraries, a bus
// device, the system bus, the operator. Each of them may never answer, or end the tool, and then
// the last line on the console shows where. Between two such calls nothing is written, so a report
// takes no more writes than it has calls.
//
// A reader that is gone changes nothing: neither the exit status nor the further texts depend on
// the outcome of a write.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zolt {

class StandardOutput {
public:
    /// The most that can be composed in place. The longest decoded payload fits: one write.
    static constexpr std::size_t capacity = std::size_t{64} * 1024;

    constexpr StandardOutput() = default;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() { flush(); }

    /// A place to compose up to @p size bytes in, at most the capacity. The text counts from
    /// finish() on.
    [[nodiscard]] char* room(std::size_t size) {
        if (size > capacity - used_) [[unlikely]] {
            writeOut();
        }
        return buffer_.data() + used_;
    }

    /// Takes over the text that was composed between the place that room() gave and @p end.
    void finish(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.data()); }

    /// Text that is already laid out, of any length.
    void write(std::string_view text);

    /// Hands everything over to the descriptor. Without any text this is no system call.
    void flush() {
        if (used_ != 0) {
            writeOut();
        }
    }

private:
    void writeOut();

    std::size_t used_ = 0;
    std::array<char, capacity> buffer_{}; // last: a short text takes no second page of memory
};

extern StandardOutput standardOutput;

} // namespace zolt
