// A board as its readers see it: the registers and payloads that they can read.
#pragma once

#include "board/board.h"
#include "board/cpld_contents.h"
#include "board/slot_registers.h"
#include "zolt_board/readable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zolt_board {

constexpr std::uint32_t payloadFetch = board::longestPayload; ///< bytes that readers fetch of a CIR
constexpr std::uint32_t oemAreaFetch = 375;                   ///< with the OEM area behind it
constexpr std::uint8_t discovered = 3; ///< DSTAT of a slot whose discovery has ended

/// A slot, with the values that readers get. None stands for what they cannot read.
struct SlotReading {
    unsigned id = 0;
    const board::Slot* described = nullptr; ///< null: the description has no table for it
    std::optional<std::uint32_t> dstat{};
    std::optional<std::uint32_t> moduleClass{};
    std::optional<std::uint32_t> payloadOffset{};

    /// The bytes from the start of the payload on, at most as many as readers fetch and get. They
    /// end with the payload block. None when they cannot be read, or while DSTAT is not
    /// `discovered`.
    std::optional<std::span<const std::uint8_t>> payload{};

    /// "slot 5", for places.
    [[nodiscard]] std::string name() const;

    /// Whether there may be a module with a payload that no reader gets.
    [[nodiscard]] bool isHidden() const { return !dstat || (dstat == discovered && !payload); }
};

class ReaderView {
public:
    /// @param board  must outlive the view
    explicit ReaderView(const board::Board& board);
    ReaderView(const ReaderView&) = delete;
    ReaderView& operator=(const ReaderView&) = delete;
    ~ReaderView() = default;

    [[nodiscard]] const board::Board& board() const { return *board_; }
    [[nodiscard]] const board::CpldContents& contents() const { return contents_; }
    [[nodiscard]] const Readable& readable() const { return readable_; }

    /// All slots, 1 to 63.
    [[nodiscard]] std::span<const SlotReading> slots() const { return slots_; }

    /// The bytes that a register delivers by its name; none when the name fails, or is unknown.
    [[nodiscard]] const board::Bytes* named(const std::string& name) const;

    /// The raw registers of a block, if a field's registers can be read; else an empty span.
    [[nodiscard]] std::span<const std::uint8_t> rawBlock(const board::BitField& field,
                                                         std::uint16_t address) const;

    /// The value of a field as readers get it: by name, else by address. A name that delivers what
    /// the field cannot hold counts as one that fails.
    [[nodiscard]] std::optional<std::uint32_t>
    value(const std::string& name, const board::BitField& field, std::uint16_t address) const;

    /// The payload block, without its first byte: payload offsets count from here.
    [[nodiscard]] std::span<const std::uint8_t> payloadRoom() const;

private:
    [[nodiscard]] SlotReading slotReading(unsigned id) const;
    [[nodiscard]] std::optional<std::span<const std::uint8_t>>
    payloadAt(std::uint32_t offset) const;

    const board::Board* board_;
    board::CpldContents contents_;
    Readable readable_;
    std::array<SlotReading, board::slotCount> slots_{};
};

} // namespace zolt_board
