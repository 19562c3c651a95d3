// Describes random modules, lets the stand-in encode them and the tool decode them. The tool has to
// print what the description says.
#include "board/board_loader.h"

#include "payload/cir_payload.h"
#include "payload/oem_area.h"
#include "payload/riser_slot_map.h"
#include "tests/support/console.h"
#include "tests/support/random_cases.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <random>
#include <sstream>

namespace standin {
namespace {

const unsigned seeds = zolt::test::randomCases(200);

enum class Shown : std::uint8_t { decimal, twoHexDigits, hexadecimal };

std::string shown(unsigned value, Shown how) {
    std::ostringstream text;
    switch (how) {
    case Shown::decimal:
        text << value;
        break;
    case Shown::twoHexDigits:
        text << "0x" << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << value;
        break;
    case Shown::hexadecimal:
        text << "0x" << std::hex << std::uppercase << value;
    }
    return text.str();
}

std::string line(const std::string& label, std::size_t width, const std::string& value) {
    return label + std::string(width - label.size(), ' ') + "= " + value + "\n";
}

// Builds a random description together with the listing that the tool has to print for it.
class Story {
public:
    Story(unsigned seed, std::size_t labelWidth) : random_(seed), labelWidth_(labelWidth) {}

    unsigned draw(unsigned lowest, unsigned highest) {
        return std::uniform_int_distribution<unsigned>(lowest, highest)(random_);
    }

    void describe(const std::string& toml) { description_ += toml + "\n"; }
    void describe(const std::string& key, const std::string& value) {
        describe(key + " = " + value);
    }
    void list(const std::string& text) { listing_ += text; }
    void list(const std::string& label, const std::string& value) {
        list(line(label, labelWidth_, value));
    }
    void list(const std::string& label, unsigned value, Shown how = Shown::decimal) {
        list(label, shown(value, how));
    }

    // Describes a field with a random value. A field of one bit is described as true or false.
    unsigned describe(const char* key, unsigned highest) {
        const unsigned value = draw(0, highest);
        describe(key, highest == 1 ? value == 1 ? "true" : "false" : std::to_string(value));
        return value;
    }
    unsigned field(const char* key, unsigned highest, const std::string& label,
                   Shown how = Shown::decimal) {
        const unsigned value = describe(key, highest);
        list(label, value, how);
        return value;
    }
    void text(const char* key, std::size_t longest, const std::string& label) {
        std::string text(draw(0, static_cast<unsigned>(longest)), ' ');
        for (char& letter : text) {
            letter = static_cast<char>(draw(' ', '~'));
            letter = letter == '\'' ? '_' : letter;
        }
        describe(key, "'" + text + "'");
        list(label, text);
    }
    void checksum(const std::string& label, const board::Bytes& bytes, std::size_t length) {
        unsigned sum = 0;
        for (std::size_t i = 0; i + 1 < length; ++i) {
            sum += bytes.at(i);
        }
        list("\n\n");
        list(label, (256 - sum % 256) % 256);
        list("\n\n");
    }

    [[nodiscard]] const std::string& description() const { return description_; }
    [[nodiscard]] const std::string& listing() const { return listing_; }

private:
    std::mt19937 random_;
    std::size_t labelWidth_;
    std::string description_;
    std::string listing_;
};

void tellHeader(Story& story, unsigned deviceClass) {
    story.describe("[[slot]]\nid = 1\n[slot.module]");
    story.describe("device_class", std::to_string(deviceClass));
    story.list("\n\nPAYLOAD HEADER :\n\n");
    story.field("format_version", 255, "PAYLOAD_FORMAT_VERSION");
    story.list("DEVICE_CLASS", deviceClass, Shown::twoHexDigits);
}

void tellLaterHeader(Story& story, unsigned deviceClass, unsigned units, unsigned endPoints) {
    const bool plain = deviceClass == 0x1A || deviceClass == 0x1B;
    story.list("STATIC_PAYLOAD_SIZE", units);
    story.field("device_id", 0xFFFF, "DEVICE_ID", Shown::twoHexDigits);
    story.field("vendor_id", 0xFFFF, "VENDOR_ID", Shown::twoHexDigits);
    if (deviceClass == 0x2A) {
        story.describe("device_version", 255);
    } else {
        story.field("device_version", 255, "DEVICE_VERSION");
    }
    if (plain) {
        story.describe("xwires", 15);
    } else {
        story.field("xwires", 15, "NUM_XWIRES");
    }
    story.field("pwires", 7, "NUM_PWIRES");
    story.field("target_type", 7, "TARGET_I2C_GPIO_DEV_TYPE");
    story.field("target_address", 127, "TARGET_I2C_GPIO_DEV_ADDRESS", Shown::twoHexDigits);
    if (!plain && deviceClass != 0x2A) {
        story.list("NUM_EP_DESCRIPTORS", endPoints);
    }
}

void tellBackplane(Story& story) {
    story.describe("[slot.module.backplane]");
    story.field("descriptor_version", 255, "BP DESCRIPTOR VERSION");
    story.field("bay_id", 255, "BAY_ID");
    story.field("backplane_id", 1023, "BACKPLANE_ID");
    story.field("power_cables", 3, "PWR CBL COUNT");
    story.field("starting_slot_offset", 15, "STARTING SLOT OFFSET");
    story.field("location", 7, "BP LOCATION");
    story.field("last_connector", 15, "LAST VALID CONN DESC");
    story.field("max_pcie_speed", 3, "MAX PCIE SPEED");
    story.field("last_slot", 63, "LAST VALID SLOT DESC");
    story.field("type", 3, "BP_TYPE");
    story.field("last_switch_port", 7, "LAST VALID SWITCH PORT");
}

void tellEndPoint(Story& story, unsigned number) {
    story.describe("[[slot.module.end_point]]");
    story.list("\n\nEND POINT " + std::to_string(number) + "\n\n");
    story.field("picpwr_index", 15, "PICPWR_INDEX");
    story.field("i2c_mux_present", 1, "I2C_MUX_PRES");
    const bool indirect = story.field("indirect", 1, "INDIRECT") == 1;
    story.field("hot_plug", 1, "HOT_PLUG");
    story.field("type", 7, "EP_TYPE");
    story.field("i2c_source", 15, "EP_I2C_SOURCE");
    story.field("lane_width", 7, "EP_LANE_WIDTH");
    story.field("i2c_mux_channel", 15, "I2C_MUX_DCH");
    if (indirect) {
        story.field("pcie_order_lower", 15, "PCIE_SW_PORT_DISC_ORDER_LOWER");
        story.field("pcie_group_lower", 7, "PCIE_SW_GROUP_LOWER");
        story.field("pcie_order_upper", 15, "PCIE_SW_PORT_DISC_ORDER_UPPER");
        story.field("pcie_group_upper", 7, "PCIE_SW_GROUP_UPPER");
    } else {
        story.field("usb_hub_present", 1, "USB_HUB_PRES");
        story.field("usb_hub_channel", 15, "USB_HUB_DCH");
        story.field("usb_source", 15, "EP_USB_SOURCE");
        story.field("dsl_index_lower", 7, "DSL_INDEX_LOWER");
        story.field("dsl_lane_offset_lower", 7, "DSL_LANE_OFFSET_LOWER");
        story.field("dsl_index_upper", 7, "DSL_INDEX_UPPER");
        story.field("dsl_lane_offset_upper", 7, "DSL_LANE_OFFSET_UPPER");
    }
}

void tellModule(Story& story, unsigned deviceClass) {
    tellHeader(story, deviceClass);
    switch (deviceClass) {
    case 0x1A:
    case 0x1B:
        tellLaterHeader(story, deviceClass, 2, 0);
        break;
    case 0x2A:
        tellLaterHeader(story, deviceClass, 3, 0);
        tellBackplane(story);
        break;
    default:
        const unsigned endPoints = story.draw(0, 31);
        tellLaterHeader(story, deviceClass, (13 + 6 * endPoints + 1 + 7) / 8, endPoints);
        for (unsigned i = 1; i <= endPoints; ++i) {
            tellEndPoint(story, i);
        }
    }
}

TEST(RoundTrip, payloadPrintsWhatWasDescribed) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        for (const unsigned deviceClass : {0x1AU, 0x1BU, 0x2AU, 0x11U, seed % 26}) {
            Story story(seed, 30);
            tellModule(story, deviceClass);
            const board::Bytes payload =
                board::parseBoard(story.description(), "b").slots.at(0).payload;
            story.checksum("CHECKSUM", payload, payload.size());
            EXPECT_EQ(zolt::test::outputOf([&] { zolt::printCirPayload(payload, 0, 2); }),
                      story.listing())
                << "seed " << seed << "\n"
                << story.description();
        }
    }
}

void tellOemDescriptor(Story& story) {
    const unsigned type = story.draw(0, 4);
    story.describe("[[slot.module.oem]]");
    story.describe("type", std::to_string(type));
    const auto list = [&](unsigned size) {
        story.list("\n");
        story.list("DESCRIPTOR TYPE", type);
        story.list("DESCRIPTOR SIZE", size);
    };
    switch (type) {
    case 1:
        list(4);
        story.field("src_id", 255, "SRC ID");
        story.field("dst_id", 255, "DST ID");
        break;
    case 2:
        list(5);
        story.field("bay_id", 255, "BAY ID");
        story.field("starting_slot_offset", 255, "STARTING SLOT OFFSET");
        story.field("location", 255, "LOCATION");
        break;
    case 3:
        list(3);
        story.field("slot_presence", 255, "SLOT PRESENCE BIT MAP", Shown::hexadecimal);
        break;
    default:
        list(4);
        story.describe("data", "[1, 2]");
    }
}

TEST(RoundTrip, oemAreaPrintsWhatWasDescribed) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        Story listed(seed, 28);
        listed.describe("[[slot]]\nid = 1\n[slot.module]");
        const unsigned count = listed.draw(1, 50);
        for (unsigned i = 0; i < count; ++i) {
            tellOemDescriptor(listed);
        }
        const board::Bytes area = board::parseBoard(listed.description(), "b").slots.at(0).oemArea;
        listed.checksum("CHECKSUM", area, area.size());
        const std::string head =
            "\n\nOEM AREA SIZE               = " + std::to_string(area.size()) +
            "\nTOTAL NUMBER OF DESCRIPTORS = " + std::to_string(count) + "\n";
        EXPECT_EQ(zolt::test::outputOf([&] { zolt::printOemArea(area, 0, 16, 2); }),
                  head + listed.listing())
            << "seed " << seed << "\n"
            << listed.description();
    }
}

constexpr std::size_t riserLabelWidth = 31;

void tellDsls(Story& story, unsigned count, std::string& payloadLines) {
    const auto add = [&](unsigned k, const std::string& label, unsigned value) {
        payloadLines +=
            line("DSL " + std::to_string(k) + " " + label, riserLabelWidth, std::to_string(value));
    };
    for (unsigned k = 1; k <= count; ++k) {
        story.describe("[[riser_map.record.dsl]]");
        story.field("id", 255, "DSL" + std::to_string(k));
        const unsigned type = story.describe("type", 4);
        add(k, "type", type);
        switch (type) {
        case 1:
            add(k, "SL index", story.describe("sl_index", 255));
            break;
        case 2:
            add(k, "OCP index", story.describe("ocp_index", 255));
            add(k, "OCP lane index", story.describe("ocp_lane_index", 255));
            break;
        case 3:
            add(k, "switched riser index", story.describe("switched_riser_index", 255));
            add(k, "SL index", story.describe("sl_index", 255));
            break;
        default:
            payloadLines += "Invalid DSL type\n";
        }
    }
}

// Adds a record and returns its length in bytes.
unsigned tellRecord(Story& story, unsigned number) {
    const unsigned dsls = story.draw(0, 9);
    const unsigned slots = story.draw(0, 9);
    const unsigned size = 23 + 5 * dsls + 2 * slots;
    story.describe("[[riser_map.record]]");
    story.list("\n\nPICPWR " + std::to_string(number) + " SLOT INFORMATION :\n\n");
    story.field("picpwr", 255, "PICPWR ID");
    story.list("PAYLOAD SIZE", size);
    story.text("location", 8, "RISER PHYSICAL LOCATION");
    story.text("part_number", 8, "MECH ASSY XPN");
    const unsigned hwuid = story.describe("hwuid", 0xFFFF);
    story.list("HWUID MSB", hwuid >> 8, Shown::twoHexDigits);
    story.list("HWUID LSB", hwuid & 0xFF, Shown::twoHexDigits);
    story.list("NO OF DSLs", dsls);

    std::string values;
    std::string slotLines;
    for (unsigned j = 1; j <= slots; ++j) {
        for (const char* const label : {" NUMBER", " TYPE"}) {
            const std::string value = std::to_string(story.draw(0, 255));
            values += value + ", ";
            slotLines += line("SLOT" + std::to_string(j) + label, riserLabelWidth, value);
        }
    }
    story.describe("slots", "[" + values + "]");
    std::string payloadLines;
    tellDsls(story, dsls, payloadLines);
    story.list("NO OF SLOTS", slots);
    story.list(slotLines);
    story.list("NO OF DSL PAYLOADS", dsls);
    story.list(payloadLines);
    return size;
}

TEST(RoundTrip, riserMapPrintsWhatWasDescribed) {
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        Story story(seed, riserLabelWidth);
        story.describe("[riser_map]");
        story.list("\n\nCONFIG DETAILS :\n\n");
        story.field("config_major", 255, "RISER CONFIG# MAJOR");
        story.field("config_minor", 255, "RISER CONFIG# MINOR");
        story.text("description", 48, "RISER CONFIG DESCRIPTION");
        story.list("\n\nNON PICPWR SLOT INFORMATION :\n\n");
        story.field("karn_present", 255, "KARN CARD PRESENCE");
        const unsigned hwuid = story.describe("karn_hwuid", 0xFFFF);
        story.list("KARN HWUID MSB", hwuid >> 8, Shown::twoHexDigits);
        story.list("KARN HWUID LSB", hwuid & 0xFF, Shown::twoHexDigits);
        story.field("karn_slot_number", 255, "KARN SLOT NUMBER");
        story.field("karn_slot_type", 255, "KARN SLOT TYPE");
        story.field("ocp_present", 255, "EMBEDDED OCP NIC CARD PRESENCE");
        story.field("ocp_slot_number", 255, "EMBEDDED OCP NIC SLOT NUMBER");
        story.field("ocp_slot_type", 255, "EMBEDDED OCP NIC SLOT TYPE");
        const unsigned records = story.draw(0, 11);
        story.list("NUMBER OF PICPWR SLOT DETAILS", records);
        unsigned size = 59;
        for (unsigned r = 1; r <= records; ++r) {
            size += tellRecord(story, r);
        }
        const board::Bytes blob = board::parseBoard(story.description(), "b").riserMap;
        ASSERT_EQ(blob.size(), 1024U);
        story.checksum("CHECKSUM", blob, size + 1);
        EXPECT_EQ(zolt::test::outputOf([&] { zolt::printRiserSlotMap(blob, 1024, 2); }),
                  story.listing())
            << "seed " << seed << "\n"
            << story.description();
    }
}

} // namespace
} // namespace standin
