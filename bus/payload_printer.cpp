#include "bus/payload_printer.h"

#include "console/output.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <variant>

namespace zolt {

namespace {

using EndpointBytes = std::array<std::uint8_t, 6>;

// Composes a report in the console's buffer. Only handOver() prints it, so a report that fails
// leaves no text.
class Composition {
public:
    explicit Composition(std::size_t labelWidth)
        : labelWidth_(labelWidth), end_(standardOutput.room(longestReport)) {}

    void add(const ReportRow& row, const PropertyValue& value) {
        addLabel(row.label);
        switch (row.type) {
        case PropertyType::byte:
            add(formatHex(row.bits.of(std::get<std::uint8_t>(value))));
            break;
        case PropertyType::word:
            add(formatHex(row.bits.of(std::get<std::uint16_t>(value))));
            break;
        case PropertyType::endpoint:
            addEndpoint(row, bytesOf(std::get<EndpointDescriptor>(value)));
            break;
        }
        add("\n");
    }

    void handOver() { standardOutput.finish(end_); }

private:
    static EndpointBytes bytesOf(const EndpointDescriptor& endpoint) {
        return std::apply([](auto... bytes) { return EndpointBytes{bytes...}; }, endpoint);
    }

    void add(std::string_view text) { end_ = std::ranges::copy(text, end_).out; }

    void addLabel(std::string_view label) {
        add(label);
        end_ = std::fill_n(end_, labelWidth_ - label.size(), ' ');
        add(": ");
    }

    void addEndpoint(const ReportRow& row, const EndpointBytes& bytes) {
        if (row.fields.empty()) {
            addBytes(bytes);
        }
        for (const EndpointField& field : row.fields) {
            add("\n");
            addLabel(field.label);
            addField(field, field.bits.of(bytes[field.byte]));
        }
    }

    void addBytes(const EndpointBytes& bytes) {
        std::string_view separator;
        for (const std::uint8_t byte : bytes) {
            add(separator);
            add(formatHex(byte));
            separator = ", ";
        }
    }

    void addField(const EndpointField& field, std::uint16_t value) {
        switch (field.style) {
        case FieldStyle::hexadecimal:
            add(formatHex(value));
            break;
        case FieldStyle::decimal:
            end_ = appendDecimal(end_, value);
            break;
        case FieldStyle::sentence:
            add(value != 0 ? field.ifSet : field.ifClear);
            break;
        }
    }

    std::size_t labelWidth_;
    char* end_;
};

} // namespace

std::string formatHex(std::uint16_t value) {
    std::array<char, 2 + longestNumber> text{'0', 'x'};
    return {text.data(), appendHexadecimal(text.data() + 2, value, 2, "0123456789ABCDEF")};
}

PayloadPrinter::PayloadPrinter(PropertyMap cirProperties) : properties(std::move(cirProperties)) {}

PayloadPrinter::PayloadPrinter(std::vector<std::uint8_t> payload) : rawBuffer(std::move(payload)) {}

void PayloadPrinter::printFitting(const Report& report) {
    if (!rawBuffer.empty()) {
        zolt::print<"%s - Raw Buffer print is not supported !.... \n">(report.printer);
        return;
    }
    Composition composition(report.labelWidth);
    std::string name; // one for all rows: most names need an allocation
    for (const ReportRow& row : report.rows) {
        name = row.property;
        composition.add(row, properties[name]);
    }
    composition.handOver();
    write("\n");
    flush();
}

} // namespace zolt
