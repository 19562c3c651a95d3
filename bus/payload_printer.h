// Reports of CIR properties: the part that all classes of modules share.
//
// A report is a table with its rows in printing order. A row names a label, the property, the type
// that the property must have, and the bits to show. A missing property has the value of an
// endpoint of six zero bytes. A row that shows an endpoint prints the zeros. A row that shows a
// number finds the wrong type: the printer throws, and prints nothing of the report.
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

/// A bit field from its highest to its lowest bit. Bit 0 is the least significant.
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
    std::size_t byte; ///< 0 to 5, in the order of the message
    BitField bits;
    FieldStyle style = FieldStyle::hexadecimal;
    std::string_view ifSet = {};   ///< sentence when the bits are not 0
    std::string_view ifClear = {}; ///< sentence when the bits are 0
};

enum class PropertyType : std::uint8_t { byte, word, endpoint };

/// One line of a report. An endpoint with fields adds a line for each field.
struct ReportRow {
    std::string_view label;
    const char* property;
    PropertyType type = PropertyType::byte;
    BitField bits = {};                         ///< of a number
    std::span<const EndpointField> fields = {}; ///< of an endpoint; without any, its bytes show
};

/// The widths to which labels are padded, without the ": ".
constexpr std::size_t wideLabel = 48;
constexpr std::size_t narrowLabel = 21;

struct Report {
    std::string_view printer; ///< name of the printer's class
    std::size_t labelWidth;
    std::span<const ReportRow> rows;
};

/// The length in bytes that no report exceeds.
constexpr std::size_t longestReport = 4096;

/// Whether the labels fit their width and the report fits longestReport, for all possible values.
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

/// Base of the printers of one module's CIR properties. Callers use the printer of the module.
class PayloadPrinter {
public:
    explicit PayloadPrinter(PropertyMap cirProperties);
    /// Takes a payload that is not split into properties. No printer supports such a payload.
    explicit PayloadPrinter(std::vector<std::uint8_t> payload);

    /// Prints the report and an empty line. For a raw payload, only prints that it is not
    /// supported.
    /// @throws std::bad_variant_access, before any output, when a property has another type than
    ///         the report demands
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
