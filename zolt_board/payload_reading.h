// What a payload says of itself: its length, its class, and how many bytes its fields have.
#pragma once

#include "zolt_board/reader_view.h"

#include "board/module_layout.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zolt_board {

struct PayloadReading {
    const SlotReading* slot = nullptr;
    std::size_t offset = 0;                ///< in the payload block
    std::span<const std::uint8_t> bytes{}; ///< what readers get; at least a header
    std::size_t statedSize = 0;            ///< in bytes
    std::uint8_t deviceClass = 0;
    std::size_t endPoints = 0;              ///< as stated; 0 for classes without end points
    std::size_t fieldsEnd = 0;              ///< where the header and the backplane end
    std::optional<std::size_t> described{}; ///< number of bytes in the description, if it has some

    [[nodiscard]] std::size_t endPointsEnd() const {
        return fieldsEnd + endPoints * board::endPointSize;
    }

    /// The place of the checksum; none when the payload gives itself no length.
    [[nodiscard]] std::optional<std::size_t> checksumPlace() const;

    /// The length that the OEM area behind the payload gives itself; 0 when there is none, or when
    /// readers do not get that far.
    [[nodiscard]] std::size_t oemAreaSize() const;
};

/// The payload of a slot; none when the slot has none, when it cannot be read, or when readers get
/// no whole header, or only zeros.
[[nodiscard]] std::optional<PayloadReading> payloadOf(const SlotReading& slot);

/// The payloads of all slots.
[[nodiscard]] std::vector<PayloadReading> payloadsOf(const ReaderView& board);

} // namespace zolt_board
