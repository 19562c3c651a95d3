// Reports of CIR properties: what all classes of modules share.
//
// A report is a table. Its rows name, in printing order, a label, the property, the type that the
// property must have, and the bits of it that are shown. A property that is missing counts as six
// zero bytes: as an endpoint it prints as such, as a number it has the wrong type and ends the
// report before anything of it is printed.
#pragma once

#include "bus/property_value.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zolt {

/// "0x" and at least two upper-case digits: 0x05, 0xFF, 0x100.
[[nodiscard]] std::string formatHex(std::uint16_t value);

/// A bit field from its highest to its lowest bit, bit 0 being the least significant.
struct BitField {
    unsigned highest = 15;
    unsigned lowest = 0;

    [[nodiscard]] constexpr std::uint16_t of(unsigned value) const {
        return static_cast<std::uint16_t>((value >> lowest) & ((2U << (highest - lowest)) - 1));
    }
};

enum class FieldStyle : std::uint8_t { hexadecimal, decimal, sentence };

/// One line of a decoded endpoint descriptor.
struct EndpointField {
    std::string_view label;
    std::size_t byte; ///< 0 to 5, in the order of the bus
    BitField bits;
    FieldStyle style = FieldStyle::hexadecimal;
    std::string_view ifSet = {}; ///< sentences of a one-bit field
    std::string_view ifClear = {};
};

enum class PropertyType : std::uint8_t { byte, word, endpoint };

/// One line of a report, or one and a line for each of its fields.
struct ReportRow {
    std::string_view label;
    const char* property;
    PropertyType type = PropertyType::byte;
    BitField bits = {};                         ///< of a number
    std::span<const EndpointField> fields = {}; ///< of an endpoint; none: its bytes are shown
};

/// Widths to which labels are padded, before the ": ".
constexpr std::size_t wideLabel = 48;
constexpr std::size_t narrowLabel = 21;

struct Report {
    std::string_view printer; ///< name of the printer's class
    std::size_t labelWidth;
    std::span<const ReportRow> rows;
};

/// The room in which a report is composed.
constexpr std::size_t longestReport = 4096;

/// Whether a report's labels fit their width, and the report its room, whatever the values are.
consteval bool fits(const Report& report) {
    constexpr std::size_t longestValue =
        std::string_view("0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF").size();
    std::size_t length = 0;
    bool labelsFit = true;
    const auto addLine = [&](std::string_view label, std::size_t value) {
        labelsFit = labelsFit && label.size() <= report.labelWidth;
        length += report.labelWidth + std::string_view(": \n").size() + value;
    };
    for (const ReportRow& row : report.rows) {
        addLine(row.label, longestValue);
        for (const EndpointField& field : row.fields) {
            addLine(field.label,
                    std::max({longestValue, field.ifSet.size(), field.ifClear.size()}));
        }
    }
    return labelsFit && length <= longestReport;
}

/// Prints one module's CIR properties. Used through the class of the module alone.
class PayloadPrinter {
public:
    explicit PayloadPrinter(PropertyMap cirProperties);
    /// A printer of a payload that was not split into properties, which none can print.
    explicit PayloadPrinter(std::vector<std::uint8_t> payload);

    /// Prints the report, composed as a whole, and an empty line; with a raw payload only that it
    /// is not supported.
    /// @throws std::bad_variant_access when a property has another type than the report demands;
    ///         nothing has been printed then
    virtual void print() = 0;

protected:
    ~PayloadPrinter() = default;
    PayloadPrinter(const PayloadPrinter&) = default;
    PayloadPrinter& operator=(const PayloadPrinter&) = default;

    template <const Report& report>
    void printReport() {
        static_assert(fits(report));
        printFitting(report);
    }

    PropertyMap properties;
    std::vector<std::uint8_t> rawBuffer;

private:
    void printFitting(const Report& report);
};

} // namespace zolt
