#include "bus/payload_printer.h"

#include "console/output.h"

#include <array>
#include <tuple>
#include <utility>
#include <variant>

namespace zolt {

namespace {

using EndpointBytes = std::array<std::uint8_t, 6>;

// A report under composition.
class Composition {
public:
    explicit Composition(std::size_t labelWidth) : labelWidth_(labelWidth) { text_.reserve(4096); }

    void add(const ReportRow& row, const PropertyValue& value) {
        addLabel(row.label);
        switch (row.type) {
        case PropertyType::byte:
            text_ += formatHex(row.bits.of(std::get<std::uint8_t>(value)));
            break;
        case PropertyType::word:
            text_ += formatHex(row.bits.of(std::get<std::uint16_t>(value)));
            break;
        case PropertyType::endpoint:
            addEndpoint(row, bytesOf(std::get<EndpointDescriptor>(value)));
            break;
        }
        text_ += '\n';
    }

    [[nodiscard]] const std::string& text() const { return text_; }

private:
    static EndpointBytes bytesOf(const EndpointDescriptor& endpoint) {
        return std::apply([](auto... bytes) { return EndpointBytes{bytes...}; }, endpoint);
    }

    void addLabel(std::string_view label) {
        text_ += label;
        text_.append(labelWidth_ - label.size(), ' ');
        text_ += ": ";
    }

    void addEndpoint(const ReportRow& row, const EndpointBytes& bytes) {
        if (row.fields.empty()) {
            addBytes(bytes);
        }
        for (const EndpointField& field : row.fields) {
            text_ += '\n';
            addLabel(field.label);
            addField(field, field.bits.of(bytes[field.byte]));
        }
    }

    void addBytes(const EndpointBytes& bytes) {
        std::string_view separator;
        for (const std::uint8_t byte : bytes) {
            text_ += separator;
            text_ += formatHex(byte);
            separator = ", ";
        }
    }

    void addField(const EndpointField& field, std::uint16_t value) {
        switch (field.style) {
        case FieldStyle::hexadecimal:
            text_ += formatHex(value);
            break;
        case FieldStyle::decimal:
            text_ += std::to_string(value);
            break;
        case FieldStyle::sentence:
            text_ += value != 0 ? field.ifSet : field.ifClear;
            break;
        }
    }

    std::size_t labelWidth_;
    std::string text_;
};

} // namespace

std::string formatHex(std::uint16_t value) {
    std::string text = "0x";
    for (unsigned digit = value > 0xFFF ? 4 : value > 0xFF ? 3 : 2; digit > 0; --digit) {
        text += "0123456789ABCDEF"[(value >> (4 * (digit - 1))) & 0xF];
    }
    return text;
}

PayloadPrinter::PayloadPrinter(PropertyMap cirProperties) : properties(std::move(cirProperties)) {}

PayloadPrinter::PayloadPrinter(std::vector<std::uint8_t> payload) : rawBuffer(std::move(payload)) {}

void PayloadPrinter::printReport(const Report& report) {
    if (!rawBuffer.empty()) {
        zolt::print<"%s - Raw Buffer print is not supported !.... \n">(report.printer);
        return;
    }
    Composition composition(report.labelWidth);
    for (const ReportRow& row : report.rows) {
        composition.add(row, properties[row.property]);
    }
    write(composition.text());
    write("\n");
    flush();
}

} // namespace zolt
