// Two decoders were written apart: that of the tool, and that of board descriptions. Both get the
// same bytes here: modules as they should be, damaged ones, cut ones, and mere noise. The listing
// of the tool must show the fields at the places, and with the values, of the descriptions' tables.
#include "board/document.h"
#include "board/module_codec.h"
#include "board/riser_map_codec.h"

#include "payload/cir_payload_decoder.h"
#include "payload/oem_area_decoder.h"
#include "payload/riser_slot_map_decoder.h"
#include "tests/board/random_modules.h"
#include "tests/support/console.h"
#include "tests/support/random_cases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace board {
namespace {

using Record = std::span<const std::uint8_t>;

enum class How : std::uint8_t { decimal, twoHexDigits, hexadecimal };

// A line of the tool's listing, and the key of a description for the same field.
struct Label {
    const char* label;
    std::string_view key;
    How how = How::decimal;
};

const BitField& fieldNamed(std::string_view key,
                           std::initializer_list<std::span<const BitField>> tables) {
    for (const auto& table : tables) {
        for (const BitField& field : table) {
            if (field.key == key) {
                return field;
            }
        }
    }
    throw std::invalid_argument(std::string(key));
}

// The listing that the tables of board/ give for some bytes. It ends where the bytes end.
class Listing {
public:
    Listing(Record bytes, int labelWidth) : bytes_(bytes), labelWidth_(labelWidth) {}

    void heading(const std::string& text) {
        if (!ended_) {
            text_ += text;
        }
    }

    // @return the value; 0 when the listing has ended
    std::uint32_t add(const std::string& label, const BitField& field, std::size_t start,
                      How how = How::decimal, const char* before = "", const char* after = "") {
        const std::size_t last = std::max(field.offset, field.upperOffset);
        ended_ = ended_ || start + last >= bytes_.size();
        if (ended_) {
            return 0;
        }
        const std::uint32_t value = field.decode(bytes_.subspan(start));
        std::ostringstream line;
        line << before << std::left << std::setw(labelWidth_) << label << "= ";
        if (how != How::decimal) {
            line << "0x" << std::right << std::setfill('0') << std::hex << std::uppercase
                 << std::setw(how == How::twoHexDigits ? 2 : 0);
        }
        line << value << "\n" << after;
        text_ += line.str();
        return value;
    }

    void text(const std::string& label, std::size_t start, std::size_t size) {
        // A text that is cut behind its NUL is whole.
        const Record rest = bytes_.subspan(std::min(start, bytes_.size()));
        const Record field = rest.first(std::min(size, rest.size()));
        ended_ = ended_ || (field.size() < size && std::ranges::find(field, 0) == field.end());
        if (!ended_) {
            std::ostringstream line;
            line << std::left << std::setw(labelWidth_) << label << "= ";
            text_ += line.str();
            text_.append(field.begin(), std::ranges::find(field, 0));
            text_ += "\n";
        }
    }

    void checksum(std::size_t at) {
        add("CHECKSUM", BitField::byte("checksum", 0), at, How::decimal, "\n\n", "\n\n");
    }

    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    Record bytes_;
    int labelWidth_;
    std::string text_;
    bool ended_ = false;
};

constexpr unsigned forCards = 1;
constexpr unsigned forPlainCards = 2;
constexpr unsigned forBackplanes = 4;
constexpr unsigned forAll = forCards | forPlainCards | forBackplanes;

struct HeaderLabel {
    Label label;
    unsigned shownFor = forAll;
};

constexpr HeaderLabel headerLabels[] = {
    {{"PAYLOAD_FORMAT_VERSION", "format_version"}},
    {{"DEVICE_CLASS", "device_class", How::twoHexDigits}},
    {{"STATIC_PAYLOAD_SIZE", "static_payload_size"}},
    {{"DEVICE_ID", "device_id", How::twoHexDigits}},
    {{"VENDOR_ID", "vendor_id", How::twoHexDigits}},
    {{"DEVICE_VERSION", "device_version"}, forCards | forPlainCards},
    {{"NUM_XWIRES", "xwires"}, forCards | forBackplanes},
    {{"NUM_PWIRES", "pwires"}},
    {{"TARGET_I2C_GPIO_DEV_TYPE", "target_type"}},
    {{"TARGET_I2C_GPIO_DEV_ADDRESS", "target_address", How::twoHexDigits}},
    {{"NUM_EP_DESCRIPTORS", "num_end_points"}, forCards},
};

constexpr Label backplaneLabels[] = {
    {"BP DESCRIPTOR VERSION", "descriptor_version"},
    {"BAY_ID", "bay_id"},
    {"BACKPLANE_ID", "backplane_id"},
    {"PWR CBL COUNT", "power_cables"},
    {"STARTING SLOT OFFSET", "starting_slot_offset"},
    {"BP LOCATION", "location"},
    {"LAST VALID CONN DESC", "last_connector"},
    {"MAX PCIE SPEED", "max_pcie_speed"},
    {"LAST VALID SLOT DESC", "last_slot"},
    {"BP_TYPE", "type"},
    {"LAST VALID SWITCH PORT", "last_switch_port"},
};

constexpr Label endPointLabels[] = {
    {"PICPWR_INDEX", "picpwr_index"},
    {"I2C_MUX_PRES", "i2c_mux_present"},
    {"INDIRECT", "indirect"},
    {"HOT_PLUG", "hot_plug"},
    {"EP_TYPE", "type"},
    {"EP_I2C_SOURCE", "i2c_source"},
    {"EP_LANE_WIDTH", "lane_width"},
    {"I2C_MUX_DCH", "i2c_mux_channel"},
};

constexpr Label directLabels[] = {
    {"USB_HUB_PRES", "usb_hub_present"},
    {"USB_HUB_DCH", "usb_hub_channel"},
    {"EP_USB_SOURCE", "usb_source"},
    {"DSL_INDEX_LOWER", "dsl_index_lower"},
    {"DSL_LANE_OFFSET_LOWER", "dsl_lane_offset_lower"},
    {"DSL_INDEX_UPPER", "dsl_index_upper"},
    {"DSL_LANE_OFFSET_UPPER", "dsl_lane_offset_upper"},
};

constexpr Label indirectLabels[] = {
    {"PCIE_SW_PORT_DISC_ORDER_LOWER", "pcie_order_lower"},
    {"PCIE_SW_GROUP_LOWER", "pcie_group_lower"},
    {"PCIE_SW_PORT_DISC_ORDER_UPPER", "pcie_order_upper"},
    {"PCIE_SW_GROUP_UPPER", "pcie_group_upper"},
};

unsigned audienceOf(PayloadBody body) {
    switch (body) {
    case PayloadBody::nothing:
        return forPlainCards;
    case PayloadBody::backplane:
        return forBackplanes;
    case PayloadBody::endPoints:
        break;
    }
    return forCards;
}

void listEndPoint(Listing& listing, std::size_t start) {
    bool isIndirect = false;
    for (const Label& label : endPointLabels) {
        const auto value = listing.add(label.label, fieldNamed(label.key, {endPointFields}), start);
        isIndirect = isIndirect || (label.key == indirectField.key && value != 0);
    }
    const std::span<const Label> more =
        isIndirect ? std::span<const Label>(indirectLabels) : directLabels;
    for (const Label& label : more) {
        listing.add(label.label, fieldNamed(label.key, {moreEndPointFields(isIndirect)}), start);
    }
}

std::string listPayload(Record bytes) {
    Listing listing(bytes, 30);
    const PayloadBody body = bodyOf(bytes.size() > 1 ? bytes[1] : 0);
    listing.heading("\n\nPAYLOAD HEADER :\n\n");
    std::uint32_t last = 0; // of a card: the number of end points
    for (const auto& [label, shownFor] : headerLabels) {
        if ((shownFor & audienceOf(body)) != 0) {
            const BitField& field =
                fieldNamed(label.key, {headerFields, {&lengthField, 1}, {&countField, 1}});
            last = listing.add(label.label, field, 0, label.how);
        }
    }
    if (body == PayloadBody::backplane) {
        for (const Label& label : backplaneLabels) {
            listing.add(label.label, fieldNamed(label.key, {backplaneFields}), payloadHeaderSize);
        }
    }
    for (std::size_t i = 0; body == PayloadBody::endPoints && i < last; ++i) {
        listing.heading("\n\nEND POINT " + std::to_string(i + 1) + "\n\n");
        listEndPoint(listing, payloadHeaderSize + i * endPointSize);
    }
    const std::size_t size =
        bytes.size() > lengthField.offset ? bytes[lengthField.offset] * payloadSizeUnit : 0;
    if (body == PayloadBody::nothing) {
        listing.checksum(2 * payloadSizeUnit - 1);
    } else if (size != 0) {
        listing.checksum(size - 1);
    }
    return listing.take();
}

constexpr Label oemLabels[] = {
    {"SRC ID", "src_id"},     {"DST ID", "dst_id"},
    {"BAY ID", "bay_id"},     {"STARTING SLOT OFFSET", "starting_slot_offset"},
    {"LOCATION", "location"}, {"SLOT PRESENCE BIT MAP", "slot_presence", How::hexadecimal},
};

std::string listOemArea(Record bytes) {
    Listing listing(bytes, 28);
    const auto byteAt = [&](const char* label, std::size_t at, const char* before) {
        return listing.add(label, BitField::byte("", 0), at, How::decimal, before);
    };
    const std::size_t size = byteAt("OEM AREA SIZE", 0, "\n\n");
    const std::uint32_t count = byteAt("TOTAL NUMBER OF DESCRIPTORS", 1, "");
    std::uint8_t at = 0; // the position has 8 bits
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t start = oemHeaderSize + at;
        const std::uint32_t type = byteAt("DESCRIPTOR TYPE", start, "\n");
        at = static_cast<std::uint8_t>(at + byteAt("DESCRIPTOR SIZE", start + 1, ""));
        for (const auto& [ofType, fields] : oemFields) {
            for (const BitField& field : fields) {
                const auto* const label = std::ranges::find(oemLabels, field.key, &Label::key);
                if (ofType == type) {
                    listing.add(label->label, field, start, label->how);
                }
            }
        }
    }
    listing.checksum(std::max(size, bytes.size()) - 1);
    return listing.take();
}

constexpr Label mapLabels[] = {
    {"KARN CARD PRESENCE", "karn_present"},
    {"KARN SLOT NUMBER", "karn_slot_number"},
    {"KARN SLOT TYPE", "karn_slot_type"},
    {"EMBEDDED OCP NIC CARD PRESENCE", "ocp_present"},
    {"EMBEDDED OCP NIC SLOT NUMBER", "ocp_slot_number"},
    {"EMBEDDED OCP NIC SLOT TYPE", "ocp_slot_type"},
};

// The tool shows an identifier of 16 bits as two bytes.
void listHwuid(Listing& listing, const std::string& prefix, const BitField& field,
               std::size_t start) {
    listing.add(prefix + "HWUID MSB", BitField::byte("", field.upperOffset), start,
                How::twoHexDigits);
    listing.add(prefix + "HWUID LSB", BitField::byte("", field.offset), start, How::twoHexDigits);
}

void listRoute(Listing& listing, unsigned number, std::size_t start) {
    const std::string prefix = "DSL " + std::to_string(number) + " ";
    // The tool's line keeps its blanks, whatever the number of digits.
    const auto add = [&](std::string label, const BitField& field) {
        constexpr std::size_t width = 25;
        label.append(width - label.size(), ' ');
        return listing.add(prefix + label, field, start);
    };
    const std::uint32_t type = add("type", BitField::byte("", 0));
    const auto* const own = std::ranges::find(dslPayloadFields, type, &FieldsOfType::type);
    if (own == std::end(dslPayloadFields)) {
        listing.heading("Invalid DSL type\n");
        return;
    }
    constexpr Label labels[] = {{"SL index", "sl_index"},
                                {"OCP index", "ocp_index"},
                                {"OCP lane index", "ocp_lane_index"},
                                {"switched riser index", "switched_riser_index"}};
    for (const BitField& field : own->fields) {
        add(std::ranges::find(labels, field.key, &Label::key)->label, field);
    }
}

std::size_t listRecord(Listing& listing, unsigned number, std::size_t start) {
    const auto byteAt = [&](const std::string& label, std::size_t at) {
        return listing.add(label, BitField::byte("", 0), at);
    };
    listing.heading("\n\nPICPWR " + std::to_string(number) + " SLOT INFORMATION :\n\n");
    listing.add("PICPWR ID", fieldNamed("picpwr", {recordFields}), start);
    const std::size_t size = byteAt("PAYLOAD SIZE", start + 1);
    listing.text("RISER PHYSICAL LOCATION", start + locationOffset, recordTextSize);
    listing.text("MECH ASSY XPN", start + partNumberOffset, recordTextSize);
    listHwuid(listing, "", fieldNamed("hwuid", {recordFields}), start);
    std::size_t at = start + recordHeadSize;
    const auto padded = [](const std::string& label, unsigned unit) {
        return label + std::to_string(unit); // followed by blanks that the number does not use up
    };
    const std::uint32_t links = byteAt("NO OF DSLs", at++);
    for (std::uint32_t i = 1; i <= links; ++i) {
        byteAt(padded("DSL", i) + std::string(27, ' '), at++);
    }
    const std::uint32_t slots = byteAt("NO OF SLOTS", at++);
    for (std::uint32_t i = 1; i <= slots; ++i) {
        byteAt(padded("SLOT", i) + " NUMBER" + std::string(19, ' '), at);
        byteAt(padded("SLOT", i) + " TYPE" + std::string(21, ' '), at + 1);
        at += cardSlotSize;
    }
    byteAt("NO OF DSL PAYLOADS", at++);
    for (std::uint32_t i = 1; i <= links; ++i) {
        listRoute(listing, i, at);
        at += dslPayloadSize;
    }
    return start + size;
}

std::string listRiserMap(Record bytes) {
    Listing listing(bytes, 31);
    listing.heading("\n\nCONFIG DETAILS :\n\n");
    listing.add("RISER CONFIG# MAJOR", fieldNamed("config_major", {riserMapHeadFields}), 0);
    listing.add("RISER CONFIG# MINOR", fieldNamed("config_minor", {riserMapHeadFields}), 0);
    listing.text("RISER CONFIG DESCRIPTION", descriptionOffset, descriptionSize);
    listing.heading("\n\nNON PICPWR SLOT INFORMATION :\n\n");
    for (const Label& label : mapLabels) {
        listing.add(label.label, fieldNamed(label.key, {riserMapHeadFields}), 0);
        if (label.key == "karn_present") {
            listHwuid(listing, "KARN ", fieldNamed("karn_hwuid", {riserMapHeadFields}), 0);
        }
    }
    const std::uint32_t records =
        listing.add("NUMBER OF PICPWR SLOT DETAILS", BitField::byte("", recordCountOffset), 0);
    std::size_t at = riserMapHeadSize;
    for (std::uint32_t i = 1; i <= records; ++i) {
        at = listRecord(listing, i, at);
    }
    listing.checksum(at);
    return listing.take();
}

// The bytes of a well-formed thing, damaged, cut, lengthened or replaced by noise; or as they are.
Bytes variantOf(Bytes bytes, std::size_t longest, test::Dice& dice) {
    switch (dice.draw(0, 4)) {
    case 0:
        dice.damage(bytes);
        break;
    case 1:
        bytes.resize(dice.draw(0, static_cast<unsigned>(bytes.size())));
        break;
    case 2:
        dice.damage(bytes);
        bytes.resize(dice.draw(0, static_cast<unsigned>(longest)), dice.byte());
        break;
    case 3:
        bytes.resize(dice.draw(0, static_cast<unsigned>(longest)));
        std::ranges::generate(bytes, [&] { return dice.byte(); });
        break;
    default:
        break;
    }
    return bytes;
}

using Decode = void (*)(Record bytes, zolt::TakeField take);

void compare(const char* what, unsigned run, const Bytes& bytes, Decode decode,
             std::string (*list)(Record)) {
    const std::string tool = zolt::test::outputOf([&] { decode(bytes, zolt::printField); });
    ASSERT_EQ(tool, list(bytes)) << what << " " << run << ": " << hexText(bytes);
}

TEST(TwoDecoders, payloads) {
    test::Dice dice(11);
    for (unsigned run = 0;
         run < zolt::test::randomCases(3'000) && !testing::Test::HasFatalFailure(); ++run) {
        const Bytes bytes = variantOf(encode(test::randomPayload(dice)), 260, dice);
        compare("payload", run, bytes, zolt::decodeCirPayload, listPayload);
    }
}

// Whole payloads: the module that a description shows has the end points that the tool lists.
TEST(TwoDecoders, endPointsOfWholePayloads) {
    test::Dice dice(12);
    for (unsigned run = 0; run < zolt::test::randomCases(600); ++run) {
        const Bytes bytes = encode(test::randomPayload(dice));
        const auto payload = decodePayload(bytes);
        ASSERT_TRUE(payload) << run << ": " << hexText(bytes);
        const std::string tool =
            zolt::test::outputOf([&] { zolt::decodeCirPayload(bytes, zolt::printField); });
        const std::string count = "END POINT " + std::to_string(payload->endPoints.size()) + "\n";
        EXPECT_EQ(tool.find(count) != std::string::npos, !payload->endPoints.empty())
            << run << ": " << hexText(bytes);
        EXPECT_EQ(tool.find("END POINT " + std::to_string(payload->endPoints.size() + 1) + "\n"),
                  std::string::npos)
            << run << ": " << hexText(bytes);
    }
}

TEST(TwoDecoders, oemAreas) {
    test::Dice dice(13);
    for (unsigned run = 0;
         run < zolt::test::randomCases(2'000) && !testing::Test::HasFatalFailure(); ++run) {
        const Bytes bytes = variantOf(encode(test::randomArea(dice)), 255, dice);
        if (!bytes.empty()) { // the tool decodes no empty area
            compare("OEM area", run, bytes, zolt::decodeOemArea, listOemArea);
        }
    }
}

TEST(TwoDecoders, riserMaps) {
    test::Dice dice(14);
    for (unsigned run = 0;
         run < zolt::test::randomCases(1'000) && !testing::Test::HasFatalFailure(); ++run) {
        const Bytes bytes = variantOf(test::blobOf(test::randomMap(dice)), 1100, dice);
        compare("riser map", run, bytes, zolt::decodeRiserSlotMap, listRiserMap);
    }
}

} // namespace
} // namespace board
