// Bytes that a record states and that the encoder would compute otherwise.
#pragma once

#include <cstdint>
#include <optional>

namespace board {

/// The stated byte; none when the encoder computes the same.
constexpr std::optional<std::uint8_t> statedUnless(std::uint8_t computed, std::uint8_t stated) {
    return stated == computed ? std::nullopt : std::optional(stated);
}

} // namespace board
