// The buffer in front of standard output: everything that the tool prints passes through here.
//
// The text reaches the descriptor line by line on a terminal, in large pieces elsewhere; in any
// case before the tool waits for an answer, and when it ends. Whether anybody takes it changes
// nothing: the tool's exit status and its further texts do not depend on that.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zolt {

class StandardOutput {
public:
    /// The most that can be composed in place. The longest report of registers fits: one write.
    static constexpr std::size_t capacity = std::size_t{64} * 1024;

    constexpr StandardOutput() = default;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() { flush(); }

    /// A place to compose up to @p size bytes in. Nothing of it counts before finish().
    [[nodiscard]] char* room(std::size_t size) {
        if (size > limit_ - used_) [[unlikely]] {
            makeRoom();
        }
        return buffer_.data() + used_;
    }

    /// Takes over what was composed, from where room() pointed up to @p end.
    void finish(const char* end) {
        used_ = static_cast<std::size_t>(end - buffer_.data());
        if (lineByLine_ && used_ > 0 && end[-1] == '\n') [[unlikely]] {
            flush();
        }
    }

    /// Text that is already laid out, of any length.
    void write(std::string_view text);

    /// Hands everything over to the descriptor.
    void flush();

private:
    void makeRoom();

    std::size_t used_ = 0;
    std::size_t limit_ = 0; ///< the capacity, once it is known what the descriptor is
    bool lineByLine_ = false;
    std::array<char, capacity> buffer_{}; // last: a short text takes no second page of memory
};

extern StandardOutput standardOutput;

} // namespace zolt
