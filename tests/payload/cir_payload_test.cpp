#include "payload/cir_payload.h"

#include "tests/payload/bytes.h"
#include "tests/support/allocation.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace zolt::cir_payload_test {
namespace {

using test::Bytes;
using test::cut;
using test::joined;
using test::outputOf;
using test::platform;

const std::string menu = "1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n";
const std::string dumpHeader = "\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
                               "--------------------------------------------------------------\n";

// A payload of a short class, which ends at byte 15.
const Bytes payload{0x01, 0x1A, 0x02, 0x00, 0x12, 0x34, 0x00, 0x0A,
                    0x07, 0x00, 0x53, 0x42, 0x23, 0x00, 0x00, 0x63};
const std::string payloadText = "\n\nPAYLOAD HEADER :\n\n"
                                "PAYLOAD_FORMAT_VERSION        = 1\n"
                                "DEVICE_CLASS                  = 0x1A\n"
                                "STATIC_PAYLOAD_SIZE           = 2\n"
                                "DEVICE_ID                     = 0x1234\n"
                                "VENDOR_ID                     = 0x0A\n"
                                "DEVICE_VERSION                = 7\n"
                                "NUM_PWIRES                    = 3\n"
                                "TARGET_I2C_GPIO_DEV_TYPE      = 2\n"
                                "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x23\n"
                                "\n\nCHECKSUM                      = 99\n\n\n";

// The same payload, read raw. The two bytes of the offset, 0x0110, precede it in the buffer, so
// each byte of the payload shows two places later.
const std::string shiftedText = "\n\nPAYLOAD HEADER :\n\n"
                                "PAYLOAD_FORMAT_VERSION        = 16\n"
                                "DEVICE_CLASS                  = 0x01\n"
                                "STATIC_PAYLOAD_SIZE           = 1\n"
                                "DEVICE_ID                     = 0x200\n"
                                "VENDOR_ID                     = 0x1234\n"
                                "DEVICE_VERSION                = 0\n"
                                "NUM_XWIRES                    = 0\n"
                                "NUM_PWIRES                    = 7\n"
                                "TARGET_I2C_GPIO_DEV_TYPE      = 0\n"
                                "TARGET_I2C_GPIO_DEV_ADDRESS   = 0x53\n"
                                "NUM_EP_DESCRIPTORS            = 0\n"
                                "\n\nCHECKSUM                      = 52\n\n\n";

constexpr std::uint16_t offset = 0x0110;

struct Outcome {
    Status status = -99;
    std::string output;
};

class CirPayloadView : public testing::Test {
protected:
    void SetUp() override {
        test::resetPlatform();
        platform().rawStatus = 42;
    }

    static Outcome shown(std::uint8_t picpwrId, std::uint8_t format, std::string_view input = "") {
        Outcome outcome;
        outcome.output =
            outputOf([&] { outcome.status = showCirPayload(picpwrId, format); }, input);
        return outcome;
    }

    // Slot 7, as the HAL reads it.
    static void nameRegisters() {
        platform().named["PICPWR_7_DSTAT"] = {3};
        platform().named["PICPWR_7_MOD_CLASS"] = {0x1A};
        platform().named["PICPWR_7_PAYLOAD_OFFSET"] = {0x10, 0x01};
    }
    static void nameAll() {
        nameRegisters();
        platform().hal["PICPWR_PAYLOADS"].content = joined({Bytes(offset + 1), cut(payload, 247)});
    }

    // Slot 7, as the CPLD driver reads it.
    static void placeRegisters() { test::placeRaw(0x1054, {0x7F, 0x1A, 0xFF, 0x10, 0x01}); }
    static void placeAll() {
        placeRegisters();
        test::placeRaw(0x2A01 + offset, cut(payload, 247));
    }

    static const std::vector<std::string>& calls() { return platform().calls; }
};

TEST_F(CirPayloadView, readsEverythingByName) {
    nameAll();
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, payloadText);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls(), (std::vector<std::string>{
                           "ReadIO_Str PICPWR_7_DSTAT", "ReadIO_Str PICPWR_7_MOD_CLASS",
                           "ReadIO_Str PICPWR_7_PAYLOAD_OFFSET", "ReadHALConfig PICPWR_PAYLOADS",
                           "ReadIO PICPWR_PAYLOADS 247 273", "delete PICPWR_PAYLOADS"}));
    EXPECT_EQ(platform().log, (std::vector<std::string>{
                                  "5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"}));
}

TEST_F(CirPayloadView, rawPayloadFollowsTheTwoBytesOfTheOffset) {
    placeAll();
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, shiftedText);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls(),
              (std::vector<std::string>{
                  "ReadIO_Str PICPWR_7_DSTAT", "cpld_read_device 0x1054 1",
                  "ReadIO_Str PICPWR_7_MOD_CLASS", "cpld_read_device 0x1055 1",
                  "ReadIO_Str PICPWR_7_PAYLOAD_OFFSET", "cpld_read_block_device 0x1057 2 1",
                  "ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                  "cpld_read_block_device 0x2B11 247 1"}));
    ASSERT_EQ(platform().log.size(), 1U);
    EXPECT_TRUE(platform().log[0].starts_with("2 273 hal_cfgdata.cpp.")) << platform().log[0];
    EXPECT_TRUE(platform().log[0].ends_with(".ReadIO: [ReadIO]: ERROR, halData is NULL"))
        << platform().log[0];
}

TEST_F(CirPayloadView, dumpOfARawPayloadBeginsWithTheOffset) {
    test::placeRaw(0x1054, {0x7F, 0x1A, 0xFF, 0x33, 0x01});
    test::placeRaw(0x2B34, cut(payload, 247));
    // The length is the buffer's byte 2. Here that is the payload's byte 0: one unit.
    EXPECT_EQ(shown(7, 1).output, dumpHeader + "0x91002b34 = 33 01 01 1a 02 00 12 34 : \n\n");
}

TEST_F(CirPayloadView, dumpsThePayloadsOwnLengthAtItsAddress) {
    nameAll();
    EXPECT_EQ(shown(7, 1).output,
              dumpHeader + "0x91002b11 = 01 1a 02 00 12 34 00 0a : 07 00 53 42 23 00 00 63 \n\n\n");
}

TEST_F(CirPayloadView, asksTwiceForTheHalsObject) {
    nameAll();
    platform().hal["PICPWR_PAYLOADS"].missingAsks = 1;
    EXPECT_EQ(shown(7, 2).output, payloadText);
    EXPECT_EQ(
        std::vector(calls().begin() + 3, calls().end()),
        (std::vector<std::string>{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                                  "ReadIO PICPWR_PAYLOADS 247 273", "delete PICPWR_PAYLOADS"}));
}

TEST_F(CirPayloadView, readsRawWhenTheHalsReadFails) {
    nameAll();
    placeAll();
    platform().hal["PICPWR_PAYLOADS"].readStatus = 1;
    platform().hal["PICPWR_PAYLOADS"].callbackRegistered = true;
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, shiftedText);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(std::vector(calls().begin() + 3, calls().end()),
              (std::vector<std::string>{
                  "ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 247 273",
                  "UnregisterInterruptCallback PICPWR_PAYLOADS", "delete PICPWR_PAYLOADS",
                  "cpld_read_block_device 0x2B11 247 1"}));
}

TEST_F(CirPayloadView, exceptionOfTheObjectsReleasePassesThrough) {
    nameAll();
    auto& object = platform().hal["PICPWR_PAYLOADS"];
    object.callbackRegistered = true;
    object.thrownByUnregister = std::make_exception_ptr(std::runtime_error("still in use"));
    EXPECT_EQ(outputOf([] { EXPECT_THROW((void)showCirPayload(7, 2), std::runtime_error); }), "");
}

TEST_F(CirPayloadView, neitherIndexNorAddressWraps) {
    nameRegisters();
    platform().named["PICPWR_7_PAYLOAD_OFFSET"] = {0xFF, 0xFF};
    platform().hal["PICPWR_PAYLOADS"].readStatus = 1;
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR payload using CPLD raw API, status 42\n");
    EXPECT_EQ(
        std::vector(calls().begin() + 4, calls().end()),
        (std::vector<std::string>{"ReadIO PICPWR_PAYLOADS 247 65536", "delete PICPWR_PAYLOADS",
                                  "cpld_read_block_device 0x12A00 247 1"}));
}

TEST_F(CirPayloadView, reportsAnUnreadableDstat) {
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR DSTAT using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(CirPayloadView, stopsAtASlotWithoutDiscovery) {
    nameAll();
    platform().named["PICPWR_7_DSTAT"] = {0};
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR 7\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
    EXPECT_EQ(calls(), (std::vector<std::string>{"ReadIO_Str PICPWR_7_DSTAT"}));
}

TEST_F(CirPayloadView, takesDstatFromTheTopBitsOfARawByte) {
    placeAll();
    platform().raw[0x1054] = 0x3F;
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR 7\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
}

TEST_F(CirPayloadView, takesAnUnreadableModuleClassForNoPayload) {
    nameAll();
    platform().named.erase("PICPWR_7_MOD_CLASS");
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR 7 module class using CPLD raw API, status 42\n"
                              "\nNo CIR payload is present for this PICPWR\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
}

TEST_F(CirPayloadView, stopsAtAModuleClassWithoutPayload) {
    nameAll();
    platform().named["PICPWR_7_MOD_CLASS"] = {0};
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "\nNo CIR payload is present for this PICPWR\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
    EXPECT_EQ(calls().size(), 2U);
}

TEST_F(CirPayloadView, reportsAnUnreadablePayloadOffset) {
    nameAll();
    platform().named.erase("PICPWR_7_PAYLOAD_OFFSET");
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output,
              "Unable to read PICPWR payload offset using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(CirPayloadView, reportsThatThereIsNoMemoryForTheRawRead) {
    placeAll();
    const test::NoScratchMemory exhausted;
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "Failed to allocate memory for PICPWR payload\n");
    EXPECT_EQ(outcome.status, statusOutOfMemory);
    EXPECT_EQ(calls().back(), "ReadHALConfig PICPWR_PAYLOADS");
}

TEST_F(CirPayloadView, reportsAnUnreadablePayload) {
    placeRegisters();
    const auto outcome = shown(7, 2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR payload using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(CirPayloadView, endsSilentlyWhereANamedReadDeliversTooLittle) {
    const std::vector<std::pair<std::string, Bytes>> tooLittle{
        {"PICPWR_7_DSTAT", {}},
        {"PICPWR_7_MOD_CLASS", {}},
        {"PICPWR_7_PAYLOAD_OFFSET", {}},
        {"PICPWR_7_PAYLOAD_OFFSET", {0x10}},
    };
    for (const auto& [name, value] : tooLittle) {
        test::resetPlatform();
        nameAll();
        platform().named[name] = value;
        const auto outcome = shown(7, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.status, statusNothingToShow);
        EXPECT_EQ(calls().back(), "ReadIO_Str " + name);
    }
}

TEST_F(CirPayloadView, decodesAsFarAsTheHalDelivered) {
    nameAll();
    platform().hal["PICPWR_PAYLOADS"].content.resize(offset + 1 + 4);
    platform().hal["PICPWR_PAYLOADS"].deliversLess = true;
    EXPECT_EQ(shown(7, 2).output, "\n\nPAYLOAD HEADER :\n\n"
                                  "PAYLOAD_FORMAT_VERSION        = 1\n"
                                  "DEVICE_CLASS                  = 0x1A\n"
                                  "STATIC_PAYLOAD_SIZE           = 2\n");
    EXPECT_EQ(shown(7, 1).output, dumpHeader + "0x91002b11 = 01 1a 02 00 \n\n");
    platform().hal["PICPWR_PAYLOADS"].content.resize(offset + 1);
    EXPECT_EQ(shown(7, 2).output, "\n\nPAYLOAD HEADER :\n\n");
    EXPECT_EQ(shown(7, 1).output, dumpHeader + "\n\n");
}

TEST_F(CirPayloadView, showsOneDisplayWhenTheFormatIsGiven) {
    nameAll();
    EXPECT_EQ(shown(7, 3, "1\n").output, "");
    EXPECT_EQ(shown(7, 3).status, statusDone);
    for (const int format : {4, 128, 255}) {
        const auto outcome = shown(7, static_cast<std::uint8_t>(format), "1\n");
        EXPECT_EQ(outcome.output, "Invalid option entered\n");
        EXPECT_EQ(outcome.status, statusDone);
    }
}

TEST_F(CirPayloadView, showsWhatTheOperatorChooses) {
    nameAll();
    const auto outcome = shown(7, 0, "2\n1\n0\n2\n3\n");
    EXPECT_EQ(outcome.output,
              menu + payloadText + menu + dumpHeader +
                  "0x91002b11 = 01 1a 02 00 12 34 00 0a : 07 00 53 42 23 00 00 63 \n\n\n" + menu +
                  "Invalid option entered\n" + menu + payloadText + menu);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls().size(), 6U); // fetched once
}

TEST_F(CirPayloadView, endsAtAChoiceThatIsNoNumber) {
    nameAll();
    const auto outcome = shown(7, 0, "two");
    EXPECT_EQ(outcome.output, menu + "scanf error\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
}

// The command line may name any slot. The HAL and the driver know which slots exist.
TEST_F(CirPayloadView, readsAnySlotThatIsNamed) {
    const auto outcome = shown(255, 2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR DSTAT using CPLD raw API, status 42\n");
    EXPECT_EQ(calls(), (std::vector<std::string>{"ReadIO_Str PICPWR_255_DSTAT",
                                                 "cpld_read_device 0x1DE4 1"}));
}

TEST(PrintCirPayload, dumpsNothingWithoutALength) {
    EXPECT_EQ(outputOf([] { printCirPayload({1, 2, 0, 4}, 0, 1); }), dumpHeader + "\n\n");
    EXPECT_EQ(outputOf([] { printCirPayload({}, 0, 1); }), dumpHeader + "\n\n");
}

TEST(PrintCirPayload, dumpsNoByteThatWasNotFetched) {
    EXPECT_EQ(outputOf([] {
                  printCirPayload({1, 2, 255, 4}, 0xFFFF, 1);
              }),
              dumpHeader + "0x91012a00 = 01 02 ff 04 \n\n");
}

} // namespace
} // namespace zolt::cir_payload_test
