#include "payload/oem_area.h"

#include "tests/payload/bytes.h"
#include "tests/support/allocation.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zolt::oem_area_test {
namespace {

using test::Bytes;
using test::cut;
using test::joined;
using test::outputOf;
using test::platform;

const std::string menu = "1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n";
const std::string dumpHeader = "\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
                               "--------------------------------------------------------------\n";
const std::string absent = "OEM area is not present for this PICPWR\n\n\n";

constexpr std::uint16_t offset = 0x0110;

const Bytes payload{0x01, 0x1A, 0x01, 0x00, 0x12, 0x34, 0x00, 0x0A};
const Bytes area{7, 1, 1, 4, 5, 6, 9};
const std::string areaText = "\n\nOEM AREA SIZE               = 7\n"
                             "TOTAL NUMBER OF DESCRIPTORS = 1\n"
                             "\nDESCRIPTOR TYPE             = 1\n"
                             "DESCRIPTOR SIZE             = 4\n"
                             "SRC ID                      = 5\n"
                             "DST ID                      = 6\n"
                             "\n\nCHECKSUM                    = 9\n\n\n";

struct Outcome {
    Status status = -99;
    std::string output;
};

class OemAreaView : public testing::Test {
protected:
    void SetUp() override {
        test::resetPlatform();
        platform().rawStatus = 42;
    }

    static Outcome shown(std::uint8_t format, std::string_view input = "") {
        Outcome outcome;
        outcome.output = outputOf([&] { outcome.status = showOemArea(63, format); }, input);
        return outcome;
    }

    static void nameRegisters() {
        platform().named["PICPWR_63_DSTAT"] = {1};
        platform().named["PICPWR_63_PAYLOAD_OFFSET"] = {0x10, 0x01};
    }
    static void nameAll(const Bytes& fetched) {
        nameRegisters();
        platform().hal["PICPWR_PAYLOADS"].content = joined({Bytes(offset + 1), cut(fetched, 375)});
    }
    static void placeAll(const Bytes& fetched) {
        test::placeRaw(0x1364, {0x40, 0xFF, 0xFF, 0x10, 0x01});
        test::placeRaw(0x2A01 + offset, cut(fetched, 375));
    }

    static const std::vector<std::string>& calls() { return platform().calls; }
};

TEST_F(OemAreaView, readsEverythingByName) {
    nameAll(joined({payload, area}));
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, areaText);
    EXPECT_EQ(outcome.status, statusDone);
    // The view does not read the module class.
    EXPECT_EQ(calls(), (std::vector<std::string>{
                           "ReadIO_Str PICPWR_63_DSTAT", "ReadIO_Str PICPWR_63_PAYLOAD_OFFSET",
                           "ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 273",
                           "delete PICPWR_PAYLOADS"}));
}

TEST_F(OemAreaView, rawPayloadFollowsTheTwoBytesOfTheOffset) {
    // The two bytes of the offset precede the payload in the buffer. The length is the buffer's
    // byte 2, the payload's byte 0; the area begins at the buffer's byte 8, the payload's byte 6.
    const Bytes fetched = joined({{0x01, 0x1A, 0x01, 0x00, 0x12, 0x34}, area});
    placeAll(fetched);
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, areaText);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls(),
              (std::vector<std::string>{
                  "ReadIO_Str PICPWR_63_DSTAT", "cpld_read_device 0x1364 1",
                  "ReadIO_Str PICPWR_63_PAYLOAD_OFFSET", "cpld_read_block_device 0x1367 2 1",
                  "ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                  "cpld_read_block_device 0x2B11 375 1"}));
}

TEST_F(OemAreaView, dumpsTheAreaAtItsAddress) {
    nameAll(joined({payload, area}));
    EXPECT_EQ(shown(1).output, dumpHeader + "0x91002b19 = 07 01 01 04 05 06 09 \n\n");
}

TEST_F(OemAreaView, dumpsAnAreaOfOneByte) {
    nameAll(joined({payload, {1, 2, 3}}));
    EXPECT_EQ(shown(1).output, dumpHeader + "0x91002b19 = 01 \n\n");
    EXPECT_EQ(shown(2).output, "\n\nOEM AREA SIZE               = 1\n");
}

TEST_F(OemAreaView, reportsAnUnreadableDstat) {
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR DSTAT using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(OemAreaView, stopsAtASlotWithoutDiscovery) {
    nameAll(joined({payload, area}));
    platform().named["PICPWR_63_DSTAT"] = {0};
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR 63\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
    EXPECT_EQ(calls().size(), 1U);
}

TEST_F(OemAreaView, reportsAnUnreadablePayloadOffset) {
    nameAll(joined({payload, area}));
    platform().named.erase("PICPWR_63_PAYLOAD_OFFSET");
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output,
              "Unable to read PICPWR payload offset using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(OemAreaView, reportsThatThereIsNoMemoryForTheRawRead) {
    nameRegisters();
    const test::NoScratchMemory exhausted;
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "Failed to allocate memory for PICPWR payload\n");
    EXPECT_EQ(outcome.status, statusOutOfMemory);
}

TEST_F(OemAreaView, reportsAnUnreadablePayload) {
    nameRegisters();
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "Unable to read PICPWR payload using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
}

TEST_F(OemAreaView, rejectsAPayloadLongerThanWhatIsFetched) {
    for (const int units : {47, 255}) {
        nameAll({1, 2, static_cast<std::uint8_t>(units)});
        const auto outcome = shown(0, "2\n3\n");
        EXPECT_EQ(outcome.output, "Invalid payload size\n");
        EXPECT_EQ(outcome.status, statusNothingToShow);
    }
}

TEST_F(OemAreaView, acceptsThePayloadThatJustFits) {
    Bytes fetched = cut({1, 2, 46}, 375);
    fetched[368] = 5; // seven bytes are there
    fetched[369] = 0;
    fetched[372] = 44;
    nameAll(fetched);
    EXPECT_EQ(shown(2).output, "\n\nOEM AREA SIZE               = 5\n"
                               "TOTAL NUMBER OF DESCRIPTORS = 0\n"
                               "\n\nCHECKSUM                    = 44\n\n\n");
    EXPECT_EQ(shown(1).output, dumpHeader + "0x91002c81 = 05 00 00 00 2c \n\n");
}

TEST_F(OemAreaView, showsAnAreaThatRunsOffUpToTheLastByte) {
    Bytes fetched = cut({1, 2, 46}, 375);
    fetched[368] = 8; // seven bytes are there
    fetched[374] = 44;
    nameAll(fetched);
    EXPECT_EQ(shown(2).output, "\n\nOEM AREA SIZE               = 8\n"
                               "TOTAL NUMBER OF DESCRIPTORS = 0\n");
    EXPECT_EQ(shown(1).output, dumpHeader + "0x91002c81 = 08 00 00 00 00 00 2c \n\n");
}

TEST_F(OemAreaView, saysOnEveryDisplayThatThereIsNoArea) {
    nameAll(payload);
    for (const int format : {1, 2, 3, 4}) {
        const auto outcome = shown(static_cast<std::uint8_t>(format));
        EXPECT_EQ(outcome.output, absent);
        EXPECT_EQ(outcome.status, statusDone);
    }
    const auto outcome = shown(0, "1\n2\n7\n3\n");
    EXPECT_EQ(outcome.output, menu + absent + menu + absent + menu + absent + menu + absent);
    EXPECT_EQ(outcome.status, statusDone);
}

TEST_F(OemAreaView, endsSilentlyWhereANamedReadDeliversTooLittle) {
    nameAll(joined({payload, area}));
    platform().named["PICPWR_63_PAYLOAD_OFFSET"] = {0x10};
    EXPECT_EQ(shown(2).output, "");
    EXPECT_EQ(shown(2).status, statusNothingToShow);
    platform().named["PICPWR_63_DSTAT"] = {};
    EXPECT_EQ(shown(2).output, "");
    EXPECT_EQ(shown(2).status, statusNothingToShow);
}

TEST_F(OemAreaView, findsNoAreaInTooFewBytes) {
    nameAll(joined({payload, area}));
    auto& object = platform().hal["PICPWR_PAYLOADS"];
    object.deliversLess = true;
    object.content.resize(offset + 1 + 8);
    EXPECT_EQ(shown(2).output, absent);
    object.content.resize(offset + 1 + 2);
    EXPECT_EQ(shown(2).output, absent);
}

TEST_F(OemAreaView, showsOneDisplayWhenTheFormatIsGiven) {
    nameAll(joined({payload, area}));
    EXPECT_EQ(shown(3, "1\n").output, "");
    EXPECT_EQ(shown(9, "1\n").output, "Invalid option entered\n");
    EXPECT_EQ(shown(9).status, statusDone);
}

TEST_F(OemAreaView, showsWhatTheOperatorChooses) {
    nameAll(joined({payload, area}));
    const auto outcome = shown(0, "2\n1\n5\n3\n");
    EXPECT_EQ(outcome.output, menu + areaText + menu + dumpHeader +
                                  "0x91002b19 = 07 01 01 04 05 06 09 \n\n" + menu +
                                  "Invalid option entered\n" + menu);
    EXPECT_EQ(outcome.status, statusDone);
}

TEST_F(OemAreaView, endsAtAChoiceThatIsNoNumber) {
    nameAll(joined({payload, area}));
    const auto outcome = shown(0, "-");
    EXPECT_EQ(outcome.output, menu + "scanf error\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
}

TEST(PrintOemArea, continuesTheAddressesOfThePayload) {
    EXPECT_EQ(outputOf([] { printOemArea({1}, 0xFFFF, 368, 1); }),
              dumpHeader + "0x91012b70 = 01 \n\n");
}

} // namespace
} // namespace zolt::oem_area_test
