#include "payload/riser_slot_map.h"

#include "tests/payload/bytes.h"
#include "tests/support/allocation.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace zolt::riser_slot_map_test {
namespace {

using test::Bytes;
using test::cut;
using test::outputOf;
using test::platform;

const std::string menu = "1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n";
const std::string dumpHeader = "\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
                               "--------------------------------------------------------------\n";

// A blob without records: 58 bytes of configuration, the number of records, the checksum.
const Bytes blob = [] {
    Bytes bytes = cut({1, 2, 'O', 'n', 'e'}, 60);
    bytes[50] = 1;
    bytes[53] = 7;
    bytes[59] = 99;
    return bytes;
}();
const std::string blobText = "\n\nCONFIG DETAILS :\n\n"
                             "RISER CONFIG# MAJOR            = 1\n"
                             "RISER CONFIG# MINOR            = 2\n"
                             "RISER CONFIG DESCRIPTION       = One\n"
                             "\n\nNON PICPWR SLOT INFORMATION :\n\n"
                             "KARN CARD PRESENCE             = 1\n"
                             "KARN HWUID MSB                 = 0x00\n"
                             "KARN HWUID LSB                 = 0x00\n"
                             "KARN SLOT NUMBER               = 7\n"
                             "KARN SLOT TYPE                 = 0\n"
                             "EMBEDDED OCP NIC CARD PRESENCE = 0\n"
                             "EMBEDDED OCP NIC SLOT NUMBER   = 0\n"
                             "EMBEDDED OCP NIC SLOT TYPE     = 0\n"
                             "NUMBER OF PICPWR SLOT DETAILS  = 0\n"
                             "\n\nCHECKSUM                       = 99\n\n\n";
const std::string blobDump = dumpHeader +
                             "0x91008a00 = 01 02 4f 6e 65 00 00 00 : 00 00 00 00 00 00 00 00 \n"
                             "0x91008a10 = 00 00 00 00 00 00 00 00 : 00 00 00 00 00 00 00 00 \n"
                             "0x91008a20 = 00 00 00 00 00 00 00 00 : 00 00 00 00 00 00 00 00 \n"
                             "0x91008a30 = 00 00 01 00 00 07 00 00 : 00 00 00 63 \n\n";

struct Outcome {
    Status status = -99;
    std::string output;
};

class RiserSlotMapView : public testing::Test {
protected:
    void SetUp() override {
        test::resetPlatform();
        platform().rawStatus = 42;
    }

    static Outcome shown(std::uint8_t format, std::string_view input = "") {
        Outcome outcome;
        outcome.output = outputOf([&] { outcome.status = showRiserSlotMap(format); }, input);
        return outcome;
    }

    static const std::vector<std::string>& calls() { return platform().calls; }
};

TEST_F(RiserSlotMapView, readsTheBlobByName) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, blobText);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls(), (std::vector<std::string>{"ReadIO_Str RISER_SLOT_AMP_BLOB"}));
}

TEST_F(RiserSlotMapView, readsTheBlobRawByteByByte) {
    test::placeRaw(0xFFFF8A00, cut(blob, 1024));
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, blobText);
    EXPECT_EQ(outcome.status, statusDone);
    std::vector<std::string> expected{"ReadIO_Str RISER_SLOT_AMP_BLOB"};
    for (unsigned address = 0xFFFF8A00; address <= 0xFFFF8DFF; ++address) {
        std::array<char, 40> call;
        (void)std::snprintf(call.data(), call.size(), "cpld_read_device 0x%X 1", address);
        expected.emplace_back(call.data());
    }
    EXPECT_EQ(calls(), expected);
}

TEST_F(RiserSlotMapView, dumpsWhatTheHalDelivered) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    EXPECT_EQ(shown(1).output, blobDump);
}

TEST_F(RiserSlotMapView, dumpsAllThatIsReadRaw) {
    test::placeRaw(0xFFFF8A00, Bytes(1024, 0x5A));
    std::string expected = dumpHeader;
    for (unsigned address = 0x91008A00; address < 0x91008E00; address += 16) {
        std::array<char, 80> line;
        (void)std::snprintf(line.data(), line.size(),
                            "0x%08x = 5a 5a 5a 5a 5a 5a 5a 5a : 5a 5a 5a 5a 5a 5a 5a 5a \n",
                            address);
        expected += line.data();
    }
    EXPECT_EQ(shown(1).output, expected + "\n\n");
}

TEST_F(RiserSlotMapView, usesTheSmallerOfReportedSizeAndByteCount) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    platform().size["RISER_SLOT_AMP_BLOB"] = 4;
    EXPECT_EQ(shown(1).output, dumpHeader + "0x91008a00 = 01 02 4f 6e \n\n");
    EXPECT_EQ(shown(2).output, "\n\nCONFIG DETAILS :\n\n"
                               "RISER CONFIG# MAJOR            = 1\n"
                               "RISER CONFIG# MINOR            = 2\n");
    platform().size["RISER_SLOT_AMP_BLOB"] = 0xFFFFFFFF;
    EXPECT_EQ(shown(1).output, blobDump);
    EXPECT_EQ(shown(2).output, blobText);
    platform().size["RISER_SLOT_AMP_BLOB"] = 0;
    EXPECT_EQ(shown(1).output, dumpHeader + "\n\n");
    EXPECT_EQ(shown(2).output, "\n\nCONFIG DETAILS :\n\n");
}

TEST_F(RiserSlotMapView, stopsAtTheFirstByteThatCannotBeRead) {
    test::placeRaw(0xFFFF8A00, cut(blob, 1023));
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "Unable to read RISER_SLOT_MAP_BLOB using CPLD raw API, status 42\n");
    EXPECT_EQ(outcome.status, statusRawReadFailed);
    EXPECT_EQ(calls().size(), 1U + 1024U);
    platform().raw.erase(0xFFFF8A00);
    platform().calls.clear();
    EXPECT_EQ(shown(2).output,
              "Unable to read RISER_SLOT_MAP_BLOB using CPLD raw API, status 42\n");
    EXPECT_EQ(calls(), (std::vector<std::string>{"ReadIO_Str RISER_SLOT_AMP_BLOB",
                                                 "cpld_read_device 0xFFFF8A00 1"}));
}

TEST_F(RiserSlotMapView, reportsThatThereIsNoMemoryForTheRawRead) {
    const test::NoScratchMemory exhausted;
    const auto outcome = shown(2);
    EXPECT_EQ(outcome.output, "Failed to allocate memory for riser slot mapping blob\n");
    EXPECT_EQ(outcome.status, statusOutOfMemory);
    EXPECT_EQ(calls().size(), 1U);
}

TEST_F(RiserSlotMapView, showsOneDisplayWhenTheFormatIsGiven) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    EXPECT_EQ(shown(3, "1\n").output, "");
    for (const int format : {4, 128, 255}) {
        const auto outcome = shown(static_cast<std::uint8_t>(format), "1\n");
        EXPECT_EQ(outcome.output, "Invalid option entered\n");
        EXPECT_EQ(outcome.status, statusDone);
    }
}

TEST_F(RiserSlotMapView, showsWhatTheOperatorChooses) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    const auto outcome = shown(0, "2\n1\n-3\n3\n");
    EXPECT_EQ(outcome.output,
              menu + blobText + menu + blobDump + menu + "Invalid option entered\n" + menu);
    EXPECT_EQ(outcome.status, statusDone);
    EXPECT_EQ(calls().size(), 1U); // fetched once
}

TEST_F(RiserSlotMapView, endsAtAChoiceThatIsNoNumber) {
    platform().named["RISER_SLOT_AMP_BLOB"] = blob;
    const auto outcome = shown(0, "!");
    EXPECT_EQ(outcome.output, menu + "scanf error\n");
    EXPECT_EQ(outcome.status, statusNothingToShow);
}

} // namespace
} // namespace zolt::riser_slot_map_test
