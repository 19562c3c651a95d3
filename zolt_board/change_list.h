// Collects the differences at one place of a board.
#pragma once

#include "zolt_board/change.h"

#include "board/bit_field.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zolt_board {

/// Stands for a length, count or checksum that nobody states wrong.
inline constexpr const char* correct = "correct";

class ChangeList {
public:
    /// @param changes  gets the changes
    /// @param place    of all of them
    ChangeList(std::vector<Change>& changes, std::string place, std::string movedFrom = {})
        : changes_(&changes), place_(std::move(place)), movedFrom_(std::move(movedFrom)) {}

    /// The list for a part of the place.
    [[nodiscard]] ChangeList at(std::string part) const;

    void added(std::string what);
    void removed(std::string what);
    void moved(std::string what);
    void reordered(std::string what);

    /// Adds a change, if the values differ.
    /// @param nothing  the word for a value that is not there
    void value(std::string what, Shown before, Shown after, const char* nothing = "none");

    /// Adds a change of a value that only one view of it shows, if the values differ.
    void valueIn(Change::View view, std::string what, Shown before, Shown after);

    /// Adds a change for each field that differs.
    void fields(std::span<const board::BitField> fields, std::span<const std::uint8_t> before,
                std::span<const std::uint8_t> after);

    /// Adds a change for each run of bytes that differ, or that only one of the boards has.
    /// @param what       of one byte: "payload byte"
    /// @param first      number of the first byte, for people
    /// @param hexDigits  of the numbers
    void bytes(const std::string& what, std::span<const std::uint8_t> before,
               std::span<const std::uint8_t> after, std::uint32_t first = 0,
               unsigned hexDigits = 2);

    [[nodiscard]] std::size_t size() const { return changes_->size(); }

private:
    Change& add(Change::Kind kind, std::string what);

    std::vector<Change>* changes_;
    std::string place_;
    std::string movedFrom_;
    std::string part_{};
};

/// The value of a field in a record, as a description writes it.
[[nodiscard]] board::WrittenValue shownField(const board::BitField& field, std::uint32_t value);

/// A stated byte, as a description writes it.
[[nodiscard]] Shown shownByte(std::string_view key, std::optional<std::uint8_t> stated);

} // namespace zolt_board
