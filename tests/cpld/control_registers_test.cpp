#include "cpld/control_registers.h"

#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace zolt {
namespace {

using test::outputOf;
using test::platform;

// One register and its line in the report. In the line, # stands for the instance's number, * for
// the value in decimal and @ for the value in hexadecimal.
struct RegisterLine {
    int moduleClass;
    const char* name;
    unsigned offset; // from the instance's base
    unsigned high;   // bits of the byte; 15 to 0 is a word
    unsigned low;
    const char* text;
    bool rawOnly = false;
};

struct Class {
    int instances;
    unsigned base;
    unsigned distance;
};

// Classes 1 to 14.
constexpr Class classes[] = {
    {1, 0x13BE, 0},  {1, 0x13C4, 0},  {2, 0x13CA, 6},  {2, 0x13DC, 6}, {2, 0x13EE, 6},
    {8, 0x1400, 9},  {24, 0x1800, 5}, {2, 0x1A00, 4},  {2, 0x1C00, 4}, {2, 0x1E00, 4},
    {16, 0x2000, 4}, {1, 0x2200, 0},  {16, 0x2400, 4}, {2, 0x2600, 4},
};

constexpr RegisterLine lines[] = {
    {1, "1C_CARD_PRES", 0, 7, 7, "1C Card Presence                  = *\n"},
    {1, "1C_CONNECTOR_PCARD_PAYLOAD_OFFSET", 1, 15, 0, "1C Connector PCARD Payload Offset = *\n"},
    {2, "4C+_CONNECTOR_PCARD_MOD_CLASS", 0, 7, 0, "4C+ Connector PCARD Module Class   = 0x@\n"},
    {2, "4C+_CONNECTOR_PCARD_PAYLOAD_OFFSET", 1, 15, 0, "4C+ Connector PCARD Payload Offset = *\n"},
    {3, "DOWNSTREAM_KARN_#_FLOP_IDX", 0, 7, 0, "Downstream KARN# FLOP Index        = *\n"},
    {3, "DOWNSTREAM_KARN_#_PAYLOAD_OFFSET", 1, 15, 0, "Downstream KARN# Payload Offset    = *\n"},
    {3, "DOWNSTREAM_KARN_#_FRU_WP", 3, 0, 0, "Downstream KARN# FRU Write Protect = *\n"},
    {4, "DOWNSTREAM_M.2_CARD_#_FLOP_IDX", 0, 7, 0, "Downstream M.2 Card# FLOP Index        = *\n"},
    {4, "DOWNSTREAM_M.2_CARD_#_PAYLOAD_OFFSET", 1, 15, 0,
     "Downstream M.2 Card# Payload Offset    = *\n"},
    {4, "DOWNSTREAM_M.2_CARD_#_FRU_WP", 3, 0, 0, "Downstream M.2 Card# FRU Write Protect = *\n"},
    {5, "DOWNSTREAM_TULM_#_BP_IDX", 0, 7, 0, "Downstream TULM# Backplane Index   = *\n"},
    {5, "DOWNSTREAM_TULM_#_PAYLOAD_OFFSET", 1, 15, 0, "Downstream TULM# Payload Offset    = *\n"},
    {5, "DOWNSTREAM_TULM_#_FRU_WP", 3, 0, 0, "Downstream TULM# FRU Write Protect = *\n"},
    {6, "BP_#_PWR_POLICY", 0, 7, 6, "Backplane # Power Policy          = *\n", true},
    {6, "BP_#_VWIRE_SMBUS_RST", 0, 3, 3, "Backplane # SMBus Reset vWire     = *\n"},
    {6, "BP_#_VWIRE_BP_RST", 0, 2, 2, "Backplane # BP Reset Vwire        = *\n", true},
    {6, "BP_#_VWIRE_RDY", 0, 1, 1, "Backplane # ready register vWire  = *\n"},
    {6, "BP_#_VWIRE_DOWNSTREAM_MODE", 0, 0, 0, "Backplane # vWire Downstream Mode = *\n"},
    {6, "BP_#_PICPWR_INDEX", 1, 7, 0, "Backplane # PICPWR Index          = *\n"},
    {7, "CEM_RISER_#_PWR_POLICY", 0, 7, 6, "CEM Riser # Power Policy      = *\n"},
    {7, "CEM_RISER_#_FRU_WP", 0, 1, 1, "CEM Riser # FRU Write Protect = *\n"},
    {7, "CEM_RISER_#_BMC_PWR_EN", 0, 0, 0, "CEM Riser # BMC Power Enable  = *\n"},
    {7, "CEM_RISER_#_PICPWR_INDEX", 2, 7, 0, "CEM Riser # PICPWR Index      = *\n"},
    {8, "KARN_#_PWR_POLICY", 0, 7, 6, "KARN # Power Policy      = *\n"},
    {8, "KARN_#_FRU_WP", 0, 0, 0, "KARN # FRU Write Protect = *\n"},
    {8, "KARN_#_PICPWR_INDEX", 1, 7, 0, "KARN # PICPWR Index      = *\n"},
    {9, "M.2_INTERPOSER_#_PWR_POLICY", 0, 7, 6, "M.2 Interposer # Power Policy      = *\n"},
    {9, "M.2_INTERPOSER_#_FRU_WP", 0, 0, 0, "M.2 Interposer # FRU Write Protect = *\n"},
    {9, "M.2_INTERPOSER_#_PICPWR_INDEX", 1, 7, 0, "M.2 Interposer # PICPWR Index      = *\n"},
    {10, "RIDA_#_PWR_POLICY", 0, 7, 6, "RIDA # Power Policy      = *\n"},
    {10, "RIDA_#_FRU_WP", 0, 0, 0, "RIDA # FRU Write Protect = *\n"},
    {10, "RIDA_#_PICPWR_INDEX", 1, 7, 0, "RIDA # PICPWR Index      = *\n"},
    {11, "PUCK_#_PWR_POLICY", 0, 7, 6, "PUCK # Power Policy      = *\n"},
    {11, "PUCK_#_FRU_WP", 0, 0, 0, "PUCK # FRU Write Protect = *\n"},
    {11, "PUCK_#_PICPWR_INDEX", 1, 7, 0, "PUCK # PICPWR Index      = *\n"},
    {12, "REMOTE_FAN_PWR_POLICY", 0, 7, 6, "RFC Power Policy = *\n"},
    {12, "REMOTE_FAN_PICPWR_INDEX", 1, 7, 0, "RFC PICPWR Index = *\n"},
    {13, "FLOP_#_PWR_POLICY", 0, 7, 6, "FLOP # Power Policy      = *\n"},
    {13, "FLOP_#_FRU_WP", 0, 4, 4, "FLOP # FRU Write Protect = *\n"},
    {13, "FLOP_#_OCP_PRES", 0, 0, 0, "FLOP # OCP Presence      = *\n"},
    {13, "FLOP_#_UNHIDE", 1, 7, 7, "FLOP # Unhide            = *\n"},
    {13, "FLOP_#_NUM_LINKS", 1, 5, 4, "FLOP # Number of links   = *\n", true},
    {13, "FLOP_#_PRSNTB", 1, 3, 0, "FLOP # Card Type         = *\n"},
    {13, "FLOP_#_PICPWR_INDEX", 2, 7, 0, "FLOP # PICPWR Index      = *\n"},
    {14, "BAT_INTRPSR_#_PWR_POLICY", 0, 7, 6, "Battery Interposer # Power Policy     = *\n"},
    {14, "BAT_INTRPSR_#_BMC_PWR_EN", 0, 4, 4, "Battery Interposer # BMC Power Enable = *\n"},
    {14, "BAT_INTRPSR_#_BATT_RDY", 0, 0, 0, "Battery Interposer # Battery Ready    = *\n"},
    {14, "BAT_INTRPSR_#_PICPWR_INDEX", 1, 7, 0, "Battery Interposer # PICPWR Index     = *\n"},
};

std::string text(const char* format, unsigned number) {
    std::array<char, 16> buffer;
    (void)std::snprintf(buffer.data(), buffer.size(), format[0] == 'X' ? "%02X" : "%u", number);
    return buffer.data();
}

std::string filled(std::string line, int instance, unsigned value = 0) {
    const auto replace = [&](char mark, const std::string& by) {
        if (const auto at = line.find(mark); at != std::string::npos) {
            line.replace(at, 1, by);
        }
    };
    replace('#', std::to_string(instance));
    replace('*', text("d", value));
    replace('@', text("X", value));
    return line;
}

// Returns the byte at an address. Neighbours differ, and each bit is set at some addresses only.
std::uint8_t contentOf(unsigned address) {
    return static_cast<std::uint8_t>(address * 0x9D + (address >> 8) * 0x35 + 0x4B);
}

unsigned addressOf(const RegisterLine& line, int instance) {
    const Class& described = classes[line.moduleClass - 1];
    return described.base + described.distance * static_cast<unsigned>(instance - 1) + line.offset;
}

unsigned rawValueOf(const RegisterLine& line, int instance) {
    const unsigned address = addressOf(line, instance);
    if (line.high == 15) {
        return contentOf(address) + 0x100U * contentOf(address + 1);
    }
    return (unsigned{contentOf(address)} >> line.low) % (1U << (line.high - line.low + 1));
}

// Named reads deliver other values than raw reads, so that the report shows which read it used.
unsigned namedValueOf(const RegisterLine& line, int instance) {
    return line.high == 15 ? (rawValueOf(line, instance) ^ 0xFFFFU)
                           : (rawValueOf(line, instance) ^ 0xFFU);
}

template <typename ShowLine>
std::string reportOf(int moduleClass, const ShowLine& lineOf) {
    const Class& described = classes[moduleClass - 1];
    std::string report;
    for (int i = 1; i <= described.instances; ++i) {
        for (const RegisterLine& line : lines) {
            report += line.moduleClass == moduleClass ? lineOf(line, i) : "";
        }
        report += described.instances > 1 ? "\n" : "";
    }
    return report;
}

std::string rawReportOf(int moduleClass) {
    return reportOf(moduleClass, [](const RegisterLine& line, int i) {
        return filled(line.text, i, rawValueOf(line, i));
    });
}

void fillRaw() {
    for (unsigned address = 0x1000; address < 0x3000; ++address) {
        platform().raw[address] = contentOf(address);
    }
}

std::string shown(int moduleSelector) {
    Status status = -1;
    std::string output =
        outputOf([&] { status = showControlRegisters(static_cast<std::uint8_t>(moduleSelector)); });
    EXPECT_EQ(status, statusDone);
    return output;
}

class ControlRegisters : public testing::Test {
protected:
    void SetUp() override { test::resetPlatform(); }
};

class ControlRegistersOfClass : public ControlRegisters, public testing::WithParamInterface<int> {
protected:
    [[nodiscard]] static std::string alone(const std::string& report) {
        return GetParam() == 2 ? "\n" + report : report;
    }
};

INSTANTIATE_TEST_SUITE_P(All, ControlRegistersOfClass, testing::Range(1, 15));

TEST_P(ControlRegistersOfClass, areReadRawWhenNoNameIsKnown) {
    fillRaw();
    EXPECT_EQ(shown(GetParam()), alone(rawReportOf(GetParam())));
}

TEST_P(ControlRegistersOfClass, showValuesOfNamedReadsUnchanged) {
    std::vector<std::string> calls;
    const auto report = reportOf(GetParam(), [&](const RegisterLine& line, int i) {
        const std::string name = filled(line.name, i);
        const unsigned address = addressOf(line, i);
        if (line.rawOnly) {
            platform().raw[address] = contentOf(address);
            std::array<char, 40> call;
            (void)std::snprintf(call.data(), call.size(), "cpld_read_device 0x%04X 1", address);
            calls.emplace_back(call.data());
            return filled(line.text, i, rawValueOf(line, i));
        }
        const unsigned value = namedValueOf(line, i);
        platform().named[name] = {static_cast<std::uint8_t>(value)};
        if (line.high == 15) {
            platform().named[name].push_back(static_cast<std::uint8_t>(value >> 8));
        }
        calls.push_back("ReadIO_Str " + name);
        return filled(line.text, i, value);
    });
    EXPECT_EQ(shown(GetParam()), alone(report));
    EXPECT_EQ(platform().calls, calls);
}

TEST_P(ControlRegistersOfClass, reportEachUnreadableRegisterAndGoOn) {
    platform().rawStatus = -7;
    EXPECT_EQ(shown(GetParam()), alone(reportOf(GetParam(), [](const RegisterLine& line, int i) {
                  return "Unable to read " + filled(line.name, i) +
                         " using CPLD raw API, status -7\n";
              })));
}

TEST_P(ControlRegistersOfClass, haveNoLineWhenTheirNamedReadDeliversTooFewBytes) {
    const auto report = reportOf(GetParam(), [](const RegisterLine& line, int i) -> std::string {
        // A word needs more than one byte, and a field more than none.
        platform().named[filled(line.name, i)].resize(line.high == 15 ? 1 : 0);
        return line.rawOnly
                   ? "Unable to read " + filled(line.name, i) + " using CPLD raw API, status 5\n"
                   : "";
    });
    EXPECT_EQ(shown(GetParam()), alone(report));
}

TEST_F(ControlRegisters, ofAllClassesFollowInOrderEachWithABlankLine) {
    fillRaw();
    std::string report;
    for (int moduleClass = 1; moduleClass <= 14; ++moduleClass) {
        report += rawReportOf(moduleClass) + "\n";
    }
    EXPECT_EQ(shown(15), report);
}

TEST_F(ControlRegisters, ofAnUnknownClassPrintNothing) {
    fillRaw();
    for (const int selector : {0, 16, 100, 255}) {
        EXPECT_EQ(shown(selector), "");
    }
    EXPECT_TRUE(platform().calls.empty());
}

TEST_F(ControlRegisters, wordsAreReadAsOneBlockLowByteFirst) {
    platform().raw = {{0x13BE, 0x80}, {0x13BF, 0x34}, {0x13C0, 0x12}};
    EXPECT_EQ(shown(1), "1C Card Presence                  = 1\n"
                        "1C Connector PCARD Payload Offset = 4660\n");
    EXPECT_EQ(platform().calls,
              (std::vector<std::string>{"ReadIO_Str 1C_CARD_PRES", "cpld_read_device 0x13BE 1",
                                        "ReadIO_Str 1C_CONNECTOR_PCARD_PAYLOAD_OFFSET",
                                        "cpld_read_block_device 0x13BF 2 1"}));
}

TEST_F(ControlRegisters, ofThe4CConnectorAloneFollowABlankLine) {
    platform().raw = {{0x13C4, 0x0A}, {0x13C5, 0xFF}, {0x13C6, 0xFF}};
    EXPECT_EQ(shown(2), "\n"
                        "4C+ Connector PCARD Module Class   = 0x0A\n"
                        "4C+ Connector PCARD Payload Offset = 65535\n");
}

// Repeats the text of one instance for the first ones, with the instance's number in place of #.
std::string ofEach(int instances, const std::string& block) {
    std::string text;
    for (int i = 1; i <= instances; ++i) {
        std::string one = block;
        for (auto at = one.find('#'); at != std::string::npos; at = one.find('#')) {
            one.replace(at, 1, std::to_string(i));
        }
        text += one;
    }
    return text;
}

TEST_F(ControlRegisters, ofTheLastRiserHaveTheirAddresses) {
    for (unsigned address = 0x1800; address < 0x1878; ++address) {
        platform().raw[address] = 0;
    }
    platform().raw[0x1873] = 0x81;
    platform().raw[0x1875] = 0xC8;
    EXPECT_EQ(shown(7), ofEach(23, "CEM Riser # Power Policy      = 0\n"
                                   "CEM Riser # FRU Write Protect = 0\n"
                                   "CEM Riser # BMC Power Enable  = 0\n"
                                   "CEM Riser # PICPWR Index      = 0\n"
                                   "\n") +
                            "CEM Riser 24 Power Policy      = 2\n"
                            "CEM Riser 24 FRU Write Protect = 0\n"
                            "CEM Riser 24 BMC Power Enable  = 1\n"
                            "CEM Riser 24 PICPWR Index      = 200\n"
                            "\n");
}

TEST_F(ControlRegisters, ofAFlopShareBytes) {
    for (unsigned address = 0x2400; address < 0x2440; ++address) {
        platform().raw[address] = 0;
    }
    platform().raw[0x243C] = 0x50;
    platform().raw[0x243D] = 0xBC;
    platform().raw[0x243E] = 9;
    EXPECT_EQ(shown(13), ofEach(15, "FLOP # Power Policy      = 0\n"
                                    "FLOP # FRU Write Protect = 0\n"
                                    "FLOP # OCP Presence      = 0\n"
                                    "FLOP # Unhide            = 0\n"
                                    "FLOP # Number of links   = 0\n"
                                    "FLOP # Card Type         = 0\n"
                                    "FLOP # PICPWR Index      = 0\n"
                                    "\n") +
                             "FLOP 16 Power Policy      = 1\n"
                             "FLOP 16 FRU Write Protect = 1\n"
                             "FLOP 16 OCP Presence      = 0\n"
                             "FLOP 16 Unhide            = 1\n"
                             "FLOP 16 Number of links   = 3\n"
                             "FLOP 16 Card Type         = 12\n"
                             "FLOP 16 PICPWR Index      = 9\n"
                             "\n");
}

TEST_F(ControlRegisters, ofABackplaneWithoutANameFailAlone) {
    for (int i = 1; i <= 8; ++i) {
        for (const char* suffix : {"_VWIRE_SMBUS_RST", "_VWIRE_RDY", "_VWIRE_DOWNSTREAM_MODE"}) {
            platform().named["BP_" + std::to_string(i) + suffix] = {1};
        }
        platform().named["BP_" + std::to_string(i) + "_PICPWR_INDEX"] = {63};
    }
    EXPECT_EQ(shown(6), ofEach(8, "Unable to read BP_#_PWR_POLICY using CPLD raw API, status 5\n"
                                  "Backplane # SMBus Reset vWire     = 1\n"
                                  "Unable to read BP_#_VWIRE_BP_RST using CPLD raw API, status 5\n"
                                  "Backplane # ready register vWire  = 1\n"
                                  "Backplane # vWire Downstream Mode = 1\n"
                                  "Backplane # PICPWR Index          = 63\n"
                                  "\n"));
}

} // namespace
} // namespace zolt
