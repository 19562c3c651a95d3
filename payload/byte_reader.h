// Checked access to the bytes that a device delivered.
//
// Offsets and lengths come from the bytes themselves, so any of them may be wrong. A reader never
// reads past the end; it returns no value instead.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace zolt {

class ByteReader {
public:
    /// @param bytes  must outlive the reader and the texts that it returns.
    constexpr explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    /// The byte at @p offset; none past the end.
    [[nodiscard]] constexpr std::optional<std::uint8_t> byte(std::size_t offset) const {
        if (offset >= bytes_.size()) {
            return std::nullopt;
        }
        return bytes_[offset];
    }

    /// The text in the field of @p length bytes at @p offset, up to the first NUL. None when the
    /// bytes end inside the field, before a NUL.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t offset,
                                                       std::size_t length) const {
        const auto rest = bytes_.subspan(std::min(offset, bytes_.size()));
        const auto field = rest.first(std::min(length, rest.size()));
        const std::string_view text(reinterpret_cast<const char*>(field.data()), field.size());
        const std::size_t end = text.find('\0');
        if (end == text.npos && field.size() < length) {
            return std::nullopt;
        }
        return text.substr(0, end);
    }

private:
    std::span<const std::uint8_t> bytes_;
};

} // namespace zolt
