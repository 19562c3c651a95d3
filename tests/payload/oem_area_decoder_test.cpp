#include "payload/oem_area_decoder.h"

#include "tests/payload/bytes.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>

namespace zolt::oem_area_decoder_test {
namespace {

using test::Bytes;
using test::cut;
using test::joined;

std::string decoded(const Bytes& area) {
    return test::outputOf([&] { decodeOemArea(area, printField); });
}

const Bytes everyType{24, 4, 1,    4, 0x10, 0x20, 2,    6,    3,    12,   250, 0,
                      3,  4, 0xA5, 0, 77,   5,    0xAA, 0xBB, 0xCC, 0x00, 0,   0x7B};
const std::string everyTypeText = "\n\nOEM AREA SIZE               = 24\n"
                                  "TOTAL NUMBER OF DESCRIPTORS = 4\n"
                                  "\nDESCRIPTOR TYPE             = 1\n"
                                  "DESCRIPTOR SIZE             = 4\n"
                                  "SRC ID                      = 16\n"
                                  "DST ID                      = 32\n"
                                  "\nDESCRIPTOR TYPE             = 2\n"
                                  "DESCRIPTOR SIZE             = 6\n"
                                  "BAY ID                      = 3\n"
                                  "STARTING SLOT OFFSET        = 12\n"
                                  "LOCATION                    = 250\n"
                                  "\nDESCRIPTOR TYPE             = 3\n"
                                  "DESCRIPTOR SIZE             = 4\n"
                                  "SLOT PRESENCE BIT MAP       = 0xA5\n"
                                  "\nDESCRIPTOR TYPE             = 77\n"
                                  "DESCRIPTOR SIZE             = 5\n"
                                  "\n\nCHECKSUM                    = 123\n\n\n";

TEST(OemArea, listsItsDescriptorsAndTheChecksum) {
    EXPECT_EQ(decoded(everyType), everyTypeText);
}

TEST(OemArea, withoutDescriptorsHasSizesAndChecksum) {
    EXPECT_EQ(decoded({3, 0, 255}), "\n\nOEM AREA SIZE               = 3\n"
                                    "TOTAL NUMBER OF DESCRIPTORS = 0\n"
                                    "\n\nCHECKSUM                    = 255\n\n\n");
}

TEST(OemArea, ofTwoBytesShowsItsCountAsTheChecksum) {
    EXPECT_EQ(decoded({2, 0}), "\n\nOEM AREA SIZE               = 2\n"
                               "TOTAL NUMBER OF DESCRIPTORS = 0\n"
                               "\n\nCHECKSUM                    = 0\n\n\n");
}

TEST(OemArea, ofOneByteEndsAtItsCount) {
    EXPECT_EQ(decoded({1}), "\n\nOEM AREA SIZE               = 1\n");
}

TEST(OemArea, bitMapsHaveNoLeadingZero) {
    EXPECT_EQ(decoded({6, 1, 3, 3, 0x07, 0}), "\n\nOEM AREA SIZE               = 6\n"
                                              "TOTAL NUMBER OF DESCRIPTORS = 1\n"
                                              "\nDESCRIPTOR TYPE             = 3\n"
                                              "DESCRIPTOR SIZE             = 3\n"
                                              "SLOT PRESENCE BIT MAP       = 0x7\n"
                                              "\n\nCHECKSUM                    = 0\n\n\n");
}

TEST(OemArea, aDescriptorOfNoSizeIsListedAsOftenAsTheCountSays) {
    std::string expected = "\n\nOEM AREA SIZE               = 7\n"
                           "TOTAL NUMBER OF DESCRIPTORS = 255\n";
    for (int i = 0; i < 255; ++i) {
        expected += "\nDESCRIPTOR TYPE             = 1\n"
                    "DESCRIPTOR SIZE             = 0\n"
                    "SRC ID                      = 5\n"
                    "DST ID                      = 6\n";
    }
    EXPECT_EQ(decoded({7, 255, 1, 0, 5, 6, 9}),
              expected + "\n\nCHECKSUM                    = 9\n\n\n");
}

TEST(OemArea, thePositionOfADescriptorWrapsAtEightBits) {
    // The second starts at position 4 and is 255 bytes long, so the third starts at position 3.
    EXPECT_EQ(decoded({12, 3, 8, 4, 0, 0, 9, 255, 8, 0, 0, 61}),
              "\n\nOEM AREA SIZE               = 12\n"
              "TOTAL NUMBER OF DESCRIPTORS = 3\n"
              "\nDESCRIPTOR TYPE             = 8\n"
              "DESCRIPTOR SIZE             = 4\n"
              "\nDESCRIPTOR TYPE             = 9\n"
              "DESCRIPTOR SIZE             = 255\n"
              "\nDESCRIPTOR TYPE             = 0\n"
              "DESCRIPTOR SIZE             = 9\n"
              "\n\nCHECKSUM                    = 61\n\n\n");
}

TEST(OemArea, endsWhereItsBytesEnd) {
    const auto upTo = [](const std::string& label, int occurrence = 1) {
        std::size_t at = everyTypeText.find(label);
        for (; occurrence > 1; --occurrence) {
            at = everyTypeText.find(label, at + 1);
        }
        return everyTypeText.substr(0, at);
    };
    EXPECT_EQ(decoded(cut(everyType, 1)), upTo("TOTAL NUMBER"));
    EXPECT_EQ(decoded(cut(everyType, 2)), upTo("\nDESCRIPTOR TYPE"));
    EXPECT_EQ(decoded(cut(everyType, 3)), upTo("DESCRIPTOR SIZE"));
    EXPECT_EQ(decoded(cut(everyType, 4)), upTo("SRC ID"));
    EXPECT_EQ(decoded(cut(everyType, 5)), upTo("DST ID"));
    EXPECT_EQ(decoded(cut(everyType, 6)), upTo("\nDESCRIPTOR TYPE", 2));
    EXPECT_EQ(decoded(cut(everyType, 10)), upTo("LOCATION"));
    EXPECT_EQ(decoded(cut(everyType, 14)), upTo("SLOT PRESENCE"));
    // The last of the 23 bytes is not the checksum.
    EXPECT_EQ(decoded(cut(everyType, 23)), upTo("\n\nCHECKSUM"));
}

TEST(FindOemArea, findsTheAreaBehindThePayload) {
    const Bytes fetched = joined({{0, 0, 1, 0, 0, 0, 0, 0}, {3, 0, 7}, {1, 2, 3}});
    const auto found = findOemArea(fetched);
    EXPECT_EQ(Bytes(found.begin(), found.end()), (Bytes{3, 0, 7}));
}

TEST(FindOemArea, startsAtThePayloadIfThatHasNoLength) {
    const Bytes fetched{2, 9, 0, 5};
    const auto found = findOemArea(fetched);
    EXPECT_EQ(Bytes(found.begin(), found.end()), (Bytes{2, 9}));
}

TEST(FindOemArea, cutsTheAreaToTheFetchedBytes) {
    const Bytes fetched = joined({{0, 0, 1, 0, 0, 0, 0, 0}, {200, 1, 2}});
    const auto found = findOemArea(fetched);
    EXPECT_EQ(Bytes(found.begin(), found.end()), (Bytes{200, 1, 2}));
}

TEST(FindOemArea, findsNothingInTooFewBytesOrWithoutASize) {
    EXPECT_TRUE(findOemArea({}).empty());
    EXPECT_TRUE(findOemArea(Bytes{1, 2}).empty());
    EXPECT_TRUE(findOemArea(Bytes{1, 2, 1}).empty());
    EXPECT_TRUE(findOemArea(Bytes{1, 2, 255, 4}).empty());
    EXPECT_TRUE(findOemArea(Bytes{0, 0, 1, 0, 0, 0, 0, 0}).empty());
    EXPECT_TRUE(findOemArea(Bytes{0, 0, 1, 0, 0, 0, 0, 0, 0, 9}).empty());
}

} // namespace
} // namespace zolt::oem_area_decoder_test
