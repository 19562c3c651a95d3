// The texts of a riser slot mapping blob, and the bytes that must not change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace capture {

struct RiserMapText {
    std::size_t offset;
    std::size_t length; ///< of the field; may be cut at the end of the blob
};

struct RiserMapLayout {
    std::vector<RiserMapText> texts{};     ///< description and part numbers, in the blob's order
    std::vector<bool> isNumber{};          ///< by offset: a number, or a text that must stay
    std::optional<std::size_t> checksum{}; ///< offset; none if the blob ends before it
};

/// Walks through the blob as the report does. Records may overlap.
[[nodiscard]] RiserMapLayout riserMapLayout(std::span<const std::uint8_t> blob);

} // namespace capture
