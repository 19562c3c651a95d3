#include "bus/payload_printer.h"

#include "bus/back_plane_payload_printer.h"
#include "bus/cem_v3_payload_printer.h"
#include "bus/puck_payload_printer.h"
#include "bus/rfc_payload_printer.h"
#include "tests/bus/modules.h"
#include "tests/bus/reports.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace zolt::payload_printer_test {
namespace {

using namespace test;

constexpr const char* wrongType = "std::get: wrong index for variant";

template <typename Printer>
std::string reportOf(const PropertyMap& properties) {
    return outputOf([&] { Printer(properties).print(); });
}

struct Failure {
    std::string printed;
    std::string error;

    bool operator==(const Failure&) const = default;
};

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << failure.printed << failure.error;
}

template <typename Printer>
Failure failureOf(const PropertyMap& properties) {
    Failure failure;
    failure.printed = outputOf([&] {
        try {
            Printer(properties).print();
        } catch (const std::bad_variant_access& error) {
            failure.error = error.what();
        }
    });
    return failure;
}

PropertyMap with(PropertyMap properties, const std::string& name, const PropertyValue& value) {
    properties[name] = value;
    return properties;
}

PropertyMap without(PropertyMap properties, const std::string& name) {
    properties.erase(name);
    return properties;
}

// Replaces some lines of a report.
std::string replaced(std::string report, const std::string& line, const std::string& other) {
    return report.replace(report.find(line), line.size(), other);
}

// Returns a value without an alternative: its change to another alternative failed halfway.
PropertyValue empty() {
    struct Thrower {
        operator std::uint8_t() const { throw std::runtime_error("no byte"); }
    };
    PropertyValue value;
    EXPECT_THROW(value.emplace<EndpointDescriptor>(Thrower(), 0, 0, 0, 0, 0), std::runtime_error);
    EXPECT_TRUE(value.valueless_by_exception());
    return value;
}

TEST(FormatHex, hasAtLeastTwoDigitsAndNoMoreThanItNeeds) {
    EXPECT_EQ(formatHex(0), "0x00");
    EXPECT_EQ(formatHex(5), "0x05");
    EXPECT_EQ(formatHex(0x10), "0x10");
    EXPECT_EQ(formatHex(255), "0xFF");
    EXPECT_EQ(formatHex(256), "0x100");
    EXPECT_EQ(formatHex(0xFFF), "0xFFF");
    EXPECT_EQ(formatHex(0x1000), "0x1000");
    EXPECT_EQ(formatHex(65535), "0xFFFF");
}

TEST(FormatHex, agreesWithPrintfForEveryValue) {
    for (unsigned value = 0; value <= 0xFFFF; ++value) {
        char text[7];
        (void)std::snprintf(text, sizeof text, "0x%02X", value);
        ASSERT_EQ(formatHex(static_cast<std::uint16_t>(value)), text);
    }
}

// A line of a report whose labels have 27 letters has 64 bytes with the longest value: six bytes.
constexpr std::size_t evenWidth = 27;
constexpr std::string_view evenLabel = "a label of 27 letters, all.";
constexpr std::string_view sentence34 = "a sentence as long as six bytes is";
constexpr std::string_view sentence35 = "a sentence as long as six bytes are";

consteval bool labelFits(std::string_view label) {
    const EndpointField fields[] = {{.label = label, .byte = 0, .bits = {}}};
    const ReportRow asField[] = {{"", "", PropertyType::endpoint, {}, fields}};
    const ReportRow asRow[] = {{label, ""}};
    const bool fit = fits({.printer = "", .labelWidth = evenWidth, .rows = asRow});
    return fit && fits({.printer = "", .labelWidth = evenWidth, .rows = asField});
}

// Whether a report with so many lines fits, the last of which is a field with these sentences.
template <std::size_t lines>
consteval bool linesFit(std::string_view ifSet, std::string_view ifClear) {
    const EndpointField fields[] = {
        {.label = evenLabel, .byte = 0, .bits = {}, .ifSet = ifSet, .ifClear = ifClear}};
    std::array<ReportRow, lines - 1> rows{};
    rows.back().fields = fields;
    return fits({.printer = "", .labelWidth = evenWidth, .rows = rows});
}

TEST(Fits, refusesALabelThatIsLongerThanItsWidth) {
    EXPECT_TRUE(labelFits(evenLabel));
    EXPECT_FALSE(labelFits("a label of 28 letters, alas."));
}

TEST(Fits, refusesAReportThatCanBeLongerThanTheLongest) {
    EXPECT_TRUE(linesFit<64>(sentence34, sentence34));
    EXPECT_FALSE(linesFit<64>(sentence35, sentence34));
    EXPECT_FALSE(linesFit<64>(sentence34, sentence35));
    EXPECT_FALSE((linesFit<65>("", "")));
}

TEST(CEMV3PayloadPrinter, prints31LinesAndAnEmptyOne) {
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(cemProperties()), cemReport + "\n");
}

TEST(CEMV3PayloadPrinter, clearedFlagsHaveTheirOwnSentences) {
    const auto properties = with(cemProperties(), "EndPoint0", EndpointDescriptor());
    EXPECT_EQ(
        reportOf<CEMV3PayloadPrinter>(properties),
        replaced(
            cemReport, decodedEndpointLines,
            "EndPoint0                                       : \n"
            "USB_HUB_PRES                                    : (no Hub) USB is directly wired from "
            "DSL to endpoint.\n"
            "HOT_PLUG                                        : Endpoint is not hotplug-capable.\n"
            "INDIRECT                                        : normal riser case: EP PCIe lane "
            "routing is directly from DSLs.\n"
            "I2C_MUX_PRES                                    : (no mux) I2C is directly wired from "
            "DSL to endpoint.\n"
            "PICPWR_INDEX                                    : 0x00\n"
            "EP_I2C_SOURCE                                   : 0x00\n"
            "EP_TYPE                                         : 0x00\n"
            "I2C_MUX_DCH                                     : 0\n"
            "EP_LANE_WIDTH                                   : 0x00\n"
            "EP_USB_SOURCE                                   : 0x00\n"
            "USB_HUB_DCH                                     : 0\n"
            "DSL_LANE_OFFSET_LOWER                           : 0x00\n"
            "DSL_INDEX_LOWER                                 : 0x00\n"
            "DSL_LANE_OFFSET_UPPER                           : 0x00\n"
            "DSL_INDEX_UPPER                                 : 0x00\n") +
            "\n");
}

TEST(CEMV3PayloadPrinter, fieldsAreCutToTheirBits) {
    const auto properties =
        with(cemProperties(), "EndPoint0", EndpointDescriptor{255, 255, 255, 255, 255, 255});
    EXPECT_EQ(
        reportOf<CEMV3PayloadPrinter>(properties),
        replaced(cemReport, decodedEndpointLines,
                 "EndPoint0                                       : \n"
                 "USB_HUB_PRES                                    : (Hub) USB goes through a USB "
                 "Hub to get to this endpoint.\n"
                 "HOT_PLUG                                        : Notify BIOS that this endpoint "
                 "is hotplug-capable. Applicable to NVME direct attach storage or similar EP.\n"
                 "INDIRECT                                        : PCIe switch case: EP PCIe lane "
                 "comes from a PCIe switch.\n"
                 "I2C_MUX_PRES                                    : (mux) I2C goes through a mux "
                 "to get to this endpoint.\n"
                 "PICPWR_INDEX                                    : 0x0F\n"
                 "EP_I2C_SOURCE                                   : 0x0F\n"
                 "EP_TYPE                                         : 0x07\n"
                 "I2C_MUX_DCH                                     : 15\n"
                 "EP_LANE_WIDTH                                   : 0x07\n"
                 "EP_USB_SOURCE                                   : 0x0F\n"
                 "USB_HUB_DCH                                     : 15\n"
                 "DSL_LANE_OFFSET_LOWER                           : 0x07\n"
                 "DSL_INDEX_LOWER                                 : 0x07\n"
                 "DSL_LANE_OFFSET_UPPER                           : 0x07\n"
                 "DSL_INDEX_UPPER                                 : 0x07\n") +
            "\n");
}

TEST(CEMV3PayloadPrinter, eachFlagIsOneBitOfTheFirstByte) {
    const std::string clear =
        reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "EndPoint0", EndpointDescriptor()));
    struct Flag {
        std::uint8_t byte;
        std::string ifClear;
        std::string ifSet;
    };
    const Flag flags[] = {
        {0x01, "(no Hub) USB is directly wired from DSL to endpoint.",
         "(Hub) USB goes through a USB Hub to get to this endpoint."},
        {0x02, "Endpoint is not hotplug-capable.",
         "Notify BIOS that this endpoint is hotplug-capable. Applicable to NVME direct attach "
         "storage or similar EP."},
        {0x04, "normal riser case: EP PCIe lane routing is directly from DSLs.",
         "PCIe switch case: EP PCIe lane comes from a PCIe switch."},
        {0x08, "(no mux) I2C is directly wired from DSL to endpoint.",
         "(mux) I2C goes through a mux to get to this endpoint."},
    };
    for (const Flag& flag : flags) {
        const EndpointDescriptor endpoint{flag.byte, 0, 0, 0, 0, 0};
        EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "EndPoint0", endpoint)),
                  replaced(clear, flag.ifClear, flag.ifSet));
    }
}

TEST(CEMV3PayloadPrinter, reservedBitsOfAnEndpointAreNotShown) {
    const auto reserved =
        with(cemProperties(), "EndPoint0", EndpointDescriptor{0, 0x10, 0x10, 0, 0x88, 0x88});
    EXPECT_EQ(
        reportOf<CEMV3PayloadPrinter>(reserved),
        reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "EndPoint0", EndpointDescriptor())));
}

TEST(CEMV3PayloadPrinter, bit3OfNumWiresIsNotShown) {
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "NumWires", std::uint8_t{0x57})),
              cemReport + "\n");
}

TEST(CEMV3PayloadPrinter, allFourBitsOfTheCrossWiresAreShown) {
    std::string report = cemReport + "\n";
    const std::string wires = "NUM_XWIRES                           : 0x0";
    report.replace(report.find(wires) + wires.size(), 1, "A");
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "NumWires", std::uint8_t{0xA7})),
              report);
}

TEST(CEMV3PayloadPrinter, topBitOfTheAddressIsNotShown) {
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(
                  with(cemProperties(), "TargetI2cDevAddr", std::uint8_t{0x50})),
              cemReport + "\n");
}

TEST(CEMV3PayloadPrinter, missingEndpointsPrintAsZeroBytes) {
    PropertyMap properties = cemProperties();
    for (const char* name : {"EndPoint1", "EndPoint2", "EndPoint3"}) {
        properties.erase(name);
    }
    properties["checksum"] = std::uint8_t{0};
    EXPECT_EQ(
        reportOf<CEMV3PayloadPrinter>(properties),
        cemHeaderLines + decodedEndpointLines +
            "EndPoint1                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint2                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint3                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "checksum                                        : 0x00\n"
            "\n");
}

TEST(CEMV3PayloadPrinter, missingFirstEndpointIsDecodedAsZeroBytes) {
    EXPECT_EQ(
        reportOf<CEMV3PayloadPrinter>(without(cemProperties(), "EndPoint0")),
        reportOf<CEMV3PayloadPrinter>(with(cemProperties(), "EndPoint0", EndpointDescriptor())));
}

TEST(BackPlanePayloadPrinter, prints28LinesAndAnEmptyOne) {
    EXPECT_EQ(reportOf<BackPlanePayloadPrinter>(backPlaneProperties()), backPlaneReport + "\n");
}

TEST(BackPlanePayloadPrinter, missingEndpointsPrintAsZeroBytes) {
    PropertyMap properties = backPlaneProperties();
    for (int i = 0; i < 16; ++i) {
        properties.erase("EndPoint" + std::to_string(i));
    }
    EXPECT_EQ(
        reportOf<BackPlanePayloadPrinter>(properties),
        cemHeaderLines +
            "EndPoint0                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint1                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint2                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint3                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint4                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint5                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint6                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint7                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint8                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint9                                       : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint10                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint11                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint12                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint13                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint14                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "EndPoint15                                      : 0x00, 0x00, 0x00, 0x00, 0x00, 0x00\n"
            "checksum                                        : 0xA5\n"
            "\n");
}

TEST(BackPlanePayloadPrinter, beginsAsTheCemReportDoes) {
    const std::size_t length = cemHeaderLines.size();
    EXPECT_EQ(reportOf<BackPlanePayloadPrinter>(cemProperties()).substr(0, length), cemHeaderLines);
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(cemProperties()).substr(0, length), cemHeaderLines);
}

TEST(RFCPayloadPrinter, printsNineLinesAndAnEmptyOne) {
    EXPECT_EQ(reportOf<RFCPayloadPrinter>(shortProperties()), shortReport + "\n");
}

TEST(PuckPayloadPrinter, printsWhatTheRfcPrinterPrints) {
    EXPECT_EQ(reportOf<PuckPayloadPrinter>(shortProperties()), shortReport + "\n");
}

TEST(RFCPayloadPrinter, doesNotTakeTheCemNameOfTheWires) {
    const auto properties =
        with(without(shortProperties(), "NumPwires"), "NumWires", std::uint8_t{0xFF});
    EXPECT_EQ(failureOf<RFCPayloadPrinter>(properties), (Failure{"", wrongType}));
    EXPECT_EQ(failureOf<PuckPayloadPrinter>(properties), (Failure{"", wrongType}));
}

// Prints a report with each of its properties missing, of another type, and without any value.
template <typename Printer>
void expectEveryRowToBeChecked(const PropertyMap& properties) {
    for (const auto& [name, value] : properties) {
        SCOPED_TRACE(name);
        const bool endpoint = value.index() == 0;
        if (!endpoint) {
            EXPECT_EQ(failureOf<Printer>(without(properties, name)), (Failure{"", wrongType}));
        }
        for (const PropertyValue& other : std::initializer_list<PropertyValue>{
                 EndpointDescriptor(), std::uint16_t{1}, std::uint8_t{1}, true}) {
            if (other.index() != value.index()) {
                EXPECT_EQ(failureOf<Printer>(with(properties, name, other)),
                          (Failure{"", wrongType}));
            }
        }
        EXPECT_EQ(failureOf<Printer>(with(properties, name, empty())),
                  (Failure{"", "std::get: variant is valueless"}));
    }
}

TEST(PayloadPrinter, propertyOfAnotherTypeEndsTheReportBeforeItIsPrinted) {
    expectEveryRowToBeChecked<CEMV3PayloadPrinter>(cemProperties());
    expectEveryRowToBeChecked<BackPlanePayloadPrinter>(backPlaneProperties());
    expectEveryRowToBeChecked<RFCPayloadPrinter>(shortProperties());
    expectEveryRowToBeChecked<PuckPayloadPrinter>(shortProperties());
}

TEST(PayloadPrinter, propertiesThatNoRowNamesAreIgnored) {
    const auto properties =
        with(with(with(cemProperties(), "A", true), "EndPoint4", std::uint8_t{1}), "deviceclass",
             std::uint16_t{2});
    EXPECT_EQ(reportOf<CEMV3PayloadPrinter>(properties), cemReport + "\n");
}

TEST(PayloadPrinter, handsOutTheWholeReport) {
    std::string handed;
    (void)outputOf([&] {
        RFCPayloadPrinter(shortProperties()).print();
        handed = handedOut();
    });
    EXPECT_EQ(handed, shortReport + "\n");
}

TEST(PayloadPrinter, rawPayloadIsNotSupported) {
    const std::vector<std::uint8_t> payload{1};
    EXPECT_EQ(outputOf([&] { CEMV3PayloadPrinter(payload).print(); }),
              "CEMV3PayloadPrinter - Raw Buffer print is not supported !.... \n");
    EXPECT_EQ(outputOf([&] { RFCPayloadPrinter(payload).print(); }),
              "RFCPayloadPrinter - Raw Buffer print is not supported !.... \n");
    EXPECT_EQ(outputOf([&] { PuckPayloadPrinter(payload).print(); }),
              "PuckPayloadPrinter - Raw Buffer print is not supported !.... \n");
    EXPECT_EQ(outputOf([&] { BackPlanePayloadPrinter(payload).print(); }),
              "BackPlanePayloadPrinter - Raw Buffer print is not supported !.... \n");
}

} // namespace
} // namespace zolt::payload_printer_test
