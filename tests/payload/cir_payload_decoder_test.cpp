#include "payload/cir_payload_decoder.h"

#include "tests/payload/bytes.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt::cir_payload_decoder_test {
namespace {

using test::Bytes;
using test::cut;
using test::joined;

std::string decoded(const Bytes& payload) {
    return test::outputOf([&] { decodeCirPayload(payload, printField); });
}

// A card with a direct and an indirect end point. Neighbouring fields differ, and the unused bits
// between them are set.
const Bytes cardHeader{0x01, 0x11, 0x04, 0xFF, 0x12, 0x34, 0x00,
                       0x0A, 0x07, 0xFF, 0x5B, 0x42, 0xA3};
const Bytes directEndPoint{0x3B, 0x95, 0x7A, 0x9C, 0xDB, 0xAE};
const Bytes indirectEndPoint{0xF4, 0x3F, 0xF0, 0x9D, 0x6F, 0xFF};
const Bytes cardEnd{0, 0, 0, 0, 0, 0, 200};
const Bytes card = joined({cardHeader, directEndPoint, indirectEndPoint, cardEnd});

const std::string cardHeaderText = "\n\nPAYLOAD HEADER :\n\n"
                                   "PAYLOAD_FORMAT_VERSION        = 1\n"
                                   "DEVICE_CLASS                  = 0x11\n"
                                   "STATIC_PAYLOAD_SIZE           = 4\n"
                                   "DEVICE_ID                     = 0x1234\n"
                                   "VENDOR_ID                     = 0x0A\n"
                                   "DEVICE_VERSION                = 7\n"
                                   "NUM_XWIRES                    = 5\n"
                                   "NUM_PWIRES                    = 3\n"
                                   "TARGET_I2C_GPIO_DEV_TYPE      = 2\n"
                                   "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x23\n"
                                   "NUM_EP_DESCRIPTORS            = 2\n";
const std::string directEndPointText = "PICPWR_INDEX                  = 3\n"
                                       "I2C_MUX_PRES                  = 1\n"
                                       "INDIRECT                      = 0\n"
                                       "HOT_PLUG                      = 1\n"
                                       "EP_TYPE                       = 4\n"
                                       "EP_I2C_SOURCE                 = 5\n"
                                       "EP_LANE_WIDTH                 = 3\n"
                                       "I2C_MUX_DCH                   = 10\n"
                                       "USB_HUB_PRES                  = 1\n"
                                       "USB_HUB_DCH                   = 9\n"
                                       "EP_USB_SOURCE                 = 12\n"
                                       "DSL_INDEX_LOWER               = 5\n"
                                       "DSL_LANE_OFFSET_LOWER         = 3\n"
                                       "DSL_INDEX_UPPER               = 2\n"
                                       "DSL_LANE_OFFSET_UPPER         = 6\n";
const std::string indirectEndPointText = "PICPWR_INDEX                  = 15\n"
                                         "I2C_MUX_PRES                  = 0\n"
                                         "INDIRECT                      = 1\n"
                                         "HOT_PLUG                      = 0\n"
                                         "EP_TYPE                       = 1\n"
                                         "EP_I2C_SOURCE                 = 15\n"
                                         "EP_LANE_WIDTH                 = 7\n"
                                         "I2C_MUX_DCH                   = 0\n"
                                         "PCIE_SW_PORT_DISC_ORDER_LOWER = 9\n"
                                         "PCIE_SW_GROUP_LOWER           = 5\n"
                                         "PCIE_SW_PORT_DISC_ORDER_UPPER = 6\n"
                                         "PCIE_SW_GROUP_UPPER           = 7\n";
const std::string cardText = cardHeaderText + "\n\nEND POINT 1\n\n" + directEndPointText +
                             "\n\nEND POINT 2\n\n" + indirectEndPointText +
                             "\n\nCHECKSUM                      = 200\n\n\n";

TEST(CirPayload, ofACardHasItsEndPoints) {
    EXPECT_EQ(decoded(card), cardText);
}

TEST(CirPayload, bytesBehindThePayloadAreNotShown) {
    EXPECT_EQ(decoded(cut(card, 247)), cardText);
}

TEST(CirPayload, withoutEndPointsEndsWithTheChecksum) {
    EXPECT_EQ(decoded({0xFF, 0x00, 0x02, 0, 0x00, 0x05, 0xFF, 0xFF, 0xFF, 0, 0xFF, 0xE0, 0x7F, 1, 2,
                       0xFE}),
              "\n\nPAYLOAD HEADER :\n\n"
              "PAYLOAD_FORMAT_VERSION        = 255\n"
              "DEVICE_CLASS                  = 0x00\n"
              "STATIC_PAYLOAD_SIZE           = 2\n"
              "DEVICE_ID                     = 0x05\n"
              "VENDOR_ID                     = 0xFFFF\n"
              "DEVICE_VERSION                = 255\n"
              "NUM_XWIRES                    = 15\n"
              "NUM_PWIRES                    = 7\n"
              "TARGET_I2C_GPIO_DEV_TYPE      = 7\n"
              "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x7F\n"
              "NUM_EP_DESCRIPTORS            = 0\n"
              "\n\nCHECKSUM                      = 254\n\n\n");
}

TEST(CirPayload, ofAShortClassHasItsChecksumInByte15) {
    for (const int deviceClass : {0x1A, 0x1B}) {
        Bytes payload = cut(card, 32);
        payload[1] = static_cast<std::uint8_t>(deviceClass);
        payload[15] = 99;
        EXPECT_EQ(decoded(payload), std::string("\n\nPAYLOAD HEADER :\n\n"
                                                "PAYLOAD_FORMAT_VERSION        = 1\n"
                                                "DEVICE_CLASS                  = 0x1") +
                                        (deviceClass == 0x1A ? "A" : "B") +
                                        "\n"
                                        "STATIC_PAYLOAD_SIZE           = 4\n"
                                        "DEVICE_ID                     = 0x1234\n"
                                        "VENDOR_ID                     = 0x0A\n"
                                        "DEVICE_VERSION                = 7\n"
                                        "NUM_PWIRES                    = 3\n"
                                        "TARGET_I2C_GPIO_DEV_TYPE      = 2\n"
                                        "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x23\n"
                                        "\n\nCHECKSUM                      = 99\n\n\n");
    }
}

// BACKPLANE_ID takes ten bits of two bytes: 0x2C5 is 709.
const Bytes backplane{0x02, 0x2A, 0x03, 0x00, 0x00, 0xAB, 0x80, 0x86, 0x55, 0x00, 0x21, 0x7F,
                      0x94, 0x04, 0x06, 0xC5, 0xAE, 0xDC, 0x6A, 0xFC, 0x00, 0x00, 0x00, 0x11};
const std::string backplaneText = "\n\nPAYLOAD HEADER :\n\n"
                                  "PAYLOAD_FORMAT_VERSION        = 2\n"
                                  "DEVICE_CLASS                  = 0x2A\n"
                                  "STATIC_PAYLOAD_SIZE           = 3\n"
                                  "DEVICE_ID                     = 0xAB\n"
                                  "VENDOR_ID                     = 0x8086\n"
                                  "NUM_XWIRES                    = 2\n"
                                  "NUM_PWIRES                    = 1\n"
                                  "TARGET_I2C_GPIO_DEV_TYPE      = 3\n"
                                  "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x14\n"
                                  "BP DESCRIPTOR VERSION         = 4\n"
                                  "BAY_ID                        = 6\n"
                                  "BACKPLANE_ID                  = 709\n"
                                  "PWR CBL COUNT                 = 2\n"
                                  "STARTING SLOT OFFSET          = 11\n"
                                  "BP LOCATION                   = 5\n"
                                  "LAST VALID CONN DESC          = 12\n"
                                  "MAX PCIE SPEED                = 1\n"
                                  "LAST VALID SLOT DESC          = 42\n"
                                  "BP_TYPE                       = 3\n"
                                  "LAST VALID SWITCH PORT        = 4\n"
                                  "\n\nCHECKSUM                      = 17\n\n\n";

TEST(CirPayload, ofABackplaneHasItsDescription) {
    EXPECT_EQ(decoded(backplane), backplaneText);
}

// Returns the listing before the line that starts with @p label.
std::string upTo(const std::string& text, const std::string& label) {
    const auto at = text.find(label);
    EXPECT_NE(at, std::string::npos) << label;
    return text.substr(0, at);
}

struct Cut {
    std::size_t bytes;
    const char* firstMissing;
};

TEST(CirPayload, endsWhereABackplanesBytesEnd) {
    for (const Cut& end : {Cut{0, "PAYLOAD_FORMAT_VERSION"},
                           Cut{1, "DEVICE_CLASS"},
                           Cut{2, "STATIC_PAYLOAD_SIZE"},
                           Cut{3, "DEVICE_ID"},
                           Cut{4, "DEVICE_ID"},
                           Cut{5, "DEVICE_ID"},
                           Cut{6, "VENDOR_ID"},
                           Cut{7, "VENDOR_ID"},
                           Cut{8, "NUM_XWIRES"},
                           Cut{10, "NUM_XWIRES"},
                           Cut{11, "TARGET_I2C_GPIO_DEV_TYPE"},
                           Cut{12, "TARGET_I2C_GPIO_DEV_ADDRESS"},
                           Cut{13, "BP DESCRIPTOR VERSION"},
                           Cut{14, "BAY_ID"},
                           Cut{15, "BACKPLANE_ID"},
                           Cut{16, "BACKPLANE_ID"},
                           Cut{17, "BP LOCATION"},
                           Cut{18, "MAX PCIE SPEED"},
                           Cut{19, "BP_TYPE"},
                           Cut{20, "\n\nCHECKSUM"},
                           Cut{23, "\n\nCHECKSUM"}}) {
        EXPECT_EQ(decoded(cut(backplane, end.bytes)), upTo(backplaneText, end.firstMissing))
            << end.bytes;
    }
}

TEST(CirPayload, endsWhereAnEndPointsBytesEnd) {
    const std::string first = cardHeaderText + "\n\nEND POINT 1\n\n";
    const std::string second = first + directEndPointText + "\n\nEND POINT 2\n\n";
    EXPECT_EQ(decoded(cut(card, 13)), first);
    EXPECT_EQ(decoded(cut(card, 14)), first + upTo(directEndPointText, "EP_TYPE"));
    EXPECT_EQ(decoded(cut(card, 15)), first + upTo(directEndPointText, "EP_LANE_WIDTH"));
    EXPECT_EQ(decoded(cut(card, 17)), first + upTo(directEndPointText, "DSL_INDEX_LOWER"));
    EXPECT_EQ(decoded(cut(card, 18)), first + upTo(directEndPointText, "DSL_INDEX_UPPER"));
    EXPECT_EQ(decoded(cut(card, 19)), second);
    EXPECT_EQ(decoded(cut(card, 23)),
              second + upTo(indirectEndPointText, "PCIE_SW_PORT_DISC_ORDER_UPPER"));
    // No line shows the last byte of an indirect end point.
    EXPECT_EQ(decoded(cut(card, 24)), second + indirectEndPointText);
}

TEST(CirPayload, of31EndPointsEndsWithTheFetchedBytes) {
    Bytes payload = cardHeader;
    payload[2] = 255; // the checksum would be byte 2039
    payload[11] = 0x1F;
    std::string expected = cardHeaderText;
    expected.replace(expected.find("= 4\n"), 4, "= 255\n");
    expected.replace(expected.find("DEV_TYPE      = 2"), 17, "DEV_TYPE      = 0");
    expected.replace(expected.find("DESCRIPTORS            = 2"), 26,
                     "DESCRIPTORS            = 31");
    for (int i = 1; i <= 31; ++i) {
        payload = joined({payload, directEndPoint});
        expected += "\n\nEND POINT " + std::to_string(i) + "\n\n" + directEndPointText;
    }
    EXPECT_EQ(decoded(cut(payload, 247)), expected);
    payload = cut(payload, 2040);
    payload[2039] = 33;
    EXPECT_EQ(decoded(payload), expected + "\n\nCHECKSUM                      = 33\n\n\n");
}

TEST(CirPayload, ofNoLengthHasNoChecksum) {
    Bytes payload = card;
    payload[2] = 0;
    payload[11] = 0x40;
    std::string expected = cardHeaderText;
    expected.replace(expected.find("= 4\n"), 4, "= 0\n");
    expected.replace(expected.find("DESCRIPTORS            = 2"), 26, "DESCRIPTORS            = 0");
    EXPECT_EQ(decoded(payload), expected);
}

TEST(CirPayload, checksumOfAShortClassMayBeMissing) {
    Bytes payload = cut(card, 15);
    payload[1] = 0x1A;
    const std::string text = decoded(payload);
    EXPECT_TRUE(text.ends_with("TARGET_I2C_GPIO_DEV_ADDRESS   = 0x23\n")) << text;
}

TEST(StatedPayloadSize, countsUnitsOfEightBytes) {
    EXPECT_EQ(statedPayloadSize({}), std::nullopt);
    EXPECT_EQ(statedPayloadSize(Bytes{1, 2}), std::nullopt);
    EXPECT_EQ(statedPayloadSize(Bytes{1, 2, 0}), 0);
    EXPECT_EQ(statedPayloadSize(Bytes{1, 2, 31}), 248);
    EXPECT_EQ(statedPayloadSize(Bytes{1, 2, 255, 0}), 2040);
}

} // namespace
} // namespace zolt::cir_payload_decoder_test
