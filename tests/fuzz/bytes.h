// Hands out a fuzzer's bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zolt::fuzz {

/// Ends the program unless @p condition holds. The fuzzer then keeps the input.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// Hands out a fuzzer's bytes in order, and zeros beyond their end.
class Bytes {
public:
    Bytes() = default;
    explicit Bytes(std::span<const std::uint8_t> bytes) : rest_(bytes) {}
    Bytes(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }

    std::uint8_t take() {
        const std::uint8_t byte = rest_.empty() ? std::uint8_t{0} : rest_.front();
        rest_ = rest_.subspan(rest_.empty() ? 0 : 1);
        return byte;
    }

    /// A number of two or four bytes, low byte first.
    std::uint16_t take16() {
        const std::uint8_t low = take();
        return static_cast<std::uint16_t>(low | take() << 8);
    }
    std::uint32_t take32() {
        const std::uint32_t low = take16();
        return low | std::uint32_t{take16()} << 16;
    }

    /// Cuts off up to @p size bytes.
    Bytes part(std::size_t size) {
        const auto front = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(front.size());
        return Bytes(front);
    }

    /// Exactly @p size bytes.
    std::vector<std::uint8_t> takeBytes(std::size_t size) {
        const auto front = part(size).rest_;
        std::vector<std::uint8_t> bytes(front.begin(), front.end());
        bytes.resize(size);
        return bytes;
    }

    /// Up to @p size bytes, as text.
    std::string takeText(std::size_t size) {
        const auto front = part(size).rest_;
        return {front.begin(), front.end()};
    }

private:
    std::span<const std::uint8_t> rest_;
};

} // namespace zolt::fuzz
