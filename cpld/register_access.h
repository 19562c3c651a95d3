// Reads registers of the CPLD: by name through the HAL, else raw through the CPLD driver.
//
// When a named read fails, the tool prints nothing and reads the register raw. It reports only a
// raw read that fails. Every view reads its named registers through readField().
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zolt {

/// The bytes of one register. The caller owns the vector and uses it for many reads.
using RegisterValue = std::vector<std::uint8_t>;

/// The place of a field in a register that is read raw.
struct RawField {
    std::uint16_t address; ///< of the byte, or of the low byte of a word
    std::uint8_t size;     ///< bytes: 1, or 2 for a word that is read as a block
    std::uint8_t shift;    ///< lowest bit of a field within a byte
    std::uint8_t mask;     ///< the field's bits after the shift

    static constexpr RawField bits(std::uint16_t address, unsigned high, unsigned low) {
        return {address, 1, static_cast<std::uint8_t>(low),
                static_cast<std::uint8_t>((1U << (high - low + 1)) - 1)};
    }
    static constexpr RawField byte(std::uint16_t address) { return bits(address, 7, 0); }
    static constexpr RawField word(std::uint16_t address) { return {address, 2, 0, 0xFF}; }

    /// The same field in the block that starts at @p base.
    [[nodiscard]] constexpr RawField from(std::uint16_t base) const {
        return {static_cast<std::uint16_t>(base + address), size, shift, mask};
    }

    /// The field's value in a raw byte.
    [[nodiscard]] constexpr std::uint8_t extract(std::uint8_t byte) const {
        return static_cast<std::uint8_t>((byte >> shift) & mask);
    }
};

/// Reads a register by name. The caller empties @p value first.
///
/// The HAL may succeed and deliver fewer bytes than the register has, or none. Such a read still
/// counts as a success: the register is not read raw, byteOf() and wordOf() find no value, and the
/// view leaves out the register's line without a complaint.
/// @return 0; else the HAL's status, and the register must be read raw.
[[nodiscard]] std::int32_t readRegister(std::string_view name, RegisterValue& value);

/// Reads an area by name, as readRegister() does.
/// @param size  receives the number of bytes that the HAL states.
[[nodiscard]] std::int32_t readArea(std::string_view name, RegisterValue& value,
                                    std::uint32_t& size);

/// Reads a field raw and appends its value to @p value: one byte, shifted down to bit 0, or both
/// bytes of a word, low byte first.
/// @return 0, or the CPLD driver's status; a failure leaves @p value unchanged.
[[nodiscard]] std::int32_t readRawField(RawField raw, RegisterValue& value);

/// Empties @p value and reads the field by name; when the HAL fails, reads it raw.
/// @return 0, or the status of the raw read, which the caller reports.
[[nodiscard]] std::int32_t readField(std::string_view name, RawField raw, RegisterValue& value);

/// The registers of one instance of a module: the start of their names and their base address.
class RegisterBlock {
public:
    /// A single unit. Its registers have full names.
    /// @param base  raw address of the block.
    explicit RegisterBlock(std::uint16_t base) : base_(base) {}

    /// One of several instances. A register's name consists of the prefix, the decimal number and
    /// the suffix (PICPWR_7_DSTAT).
    RegisterBlock(std::string_view prefix, unsigned instance, std::uint16_t base);

    /// The name of the register with @p suffix, valid until the next call of name() or read(). It
    /// is cut to longestName characters; all names of the HAL are shorter.
    [[nodiscard]] std::string_view name(std::string_view suffix) {
        char* const end = name_.data() + prefixLength_;
        return {name_.data(), end + suffix.copy(end, longestName - prefixLength_)};
    }

    /// Reads a register as readField() does; the address of @p raw is relative to the block.
    [[nodiscard]] std::int32_t read(std::string_view suffix, RawField raw, RegisterValue& value) {
        return readField(name(suffix), raw.from(base_), value);
    }

    /// Empties @p value, then reads a register as readRawField() does.
    [[nodiscard]] std::int32_t readRaw(RawField raw, RegisterValue& value) const {
        value.clear();
        return readRawField(raw.from(base_), value);
    }

    static constexpr std::size_t longestName = 64;

private:
    std::array<char, longestName> name_;
    std::size_t prefixLength_ = 0;
    std::uint16_t base_;
};

/// The value of a one-byte register; none when the read delivered no byte.
[[nodiscard]] constexpr std::optional<std::uint8_t> byteOf(const RegisterValue& value) {
    if (value.empty()) {
        return std::nullopt;
    }
    return value[0];
}

/// The value of a 16-bit register, low byte first; none when the read delivered fewer bytes.
[[nodiscard]] constexpr std::optional<std::uint16_t> wordOf(const RegisterValue& value) {
    if (value.size() < 2) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(value[0] | value[1] << 8);
}

} // namespace zolt
