#include "payload/riser_slot_map_decoder.h"

#include "tests/payload/bytes.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace zolt::riser_slot_map_decoder_test {
namespace {

using test::Bytes;
using test::cut;
using test::joined;

std::string decoded(const Bytes& blob) {
    return test::outputOf([&] { decodeRiserSlotMap(blob, printField); });
}

// Returns text in a field of @p size bytes.
Bytes text(std::string_view content, std::size_t size) {
    return cut(Bytes(content.begin(), content.end()), size);
}

// Returns the blob's first part, which ends with the number of records.
Bytes front(std::uint8_t records, std::string_view description = "Two risers, left") {
    return joined({{3, 17}, text(description, 48), {1, 0x0A, 0xFE, 21, 2, 0, 22, 5, records}});
}

std::string frontText(int records, const std::string& description = "Two risers, left") {
    return "\n\nCONFIG DETAILS :\n\n"
           "RISER CONFIG# MAJOR            = 3\n"
           "RISER CONFIG# MINOR            = 17\n"
           "RISER CONFIG DESCRIPTION       = " +
           description +
           "\n"
           "\n\nNON PICPWR SLOT INFORMATION :\n\n"
           "KARN CARD PRESENCE             = 1\n"
           "KARN HWUID MSB                 = 0x0A\n"
           "KARN HWUID LSB                 = 0xFE\n"
           "KARN SLOT NUMBER               = 21\n"
           "KARN SLOT TYPE                 = 2\n"
           "EMBEDDED OCP NIC CARD PRESENCE = 0\n"
           "EMBEDDED OCP NIC SLOT NUMBER   = 22\n"
           "EMBEDDED OCP NIC SLOT TYPE     = 5\n"
           "NUMBER OF PICPWR SLOT DETAILS  = " +
           std::to_string(records) + "\n";
}

// A record with a DSL of each type and one of an unknown type, three slots, a wrong payload count.
const Bytes fullRecord = joined({{12, 49},
                                 text("RISER-A1", 8),
                                 text("XPN\0 no", 8),
                                 {0x12, 0x0B, 4},
                                 {9, 8, 7, 255},
                                 {3},
                                 {31, 1, 32, 2, 33, 255},
                                 {2},
                                 {1, 0x11, 0xEE, 0xEE},
                                 {2, 0x21, 0x22, 0xEE},
                                 {3, 0x31, 0x32, 0xEE},
                                 {4, 0xEE, 0xEE, 0xEE}});
const std::string fullRecordText = "PICPWR ID                      = 12\n"
                                   "PAYLOAD SIZE                   = 49\n"
                                   "RISER PHYSICAL LOCATION        = RISER-A1\n"
                                   "MECH ASSY XPN                  = XPN\n"
                                   "HWUID MSB                      = 0x12\n"
                                   "HWUID LSB                      = 0x0B\n"
                                   "NO OF DSLs                     = 4\n"
                                   "DSL1                           = 9\n"
                                   "DSL2                           = 8\n"
                                   "DSL3                           = 7\n"
                                   "DSL4                           = 255\n"
                                   "NO OF SLOTS                    = 3\n"
                                   "SLOT1 NUMBER                   = 31\n"
                                   "SLOT1 TYPE                     = 1\n"
                                   "SLOT2 NUMBER                   = 32\n"
                                   "SLOT2 TYPE                     = 2\n"
                                   "SLOT3 NUMBER                   = 33\n"
                                   "SLOT3 TYPE                     = 255\n"
                                   "NO OF DSL PAYLOADS             = 2\n"
                                   "DSL 1 type                     = 1\n"
                                   "DSL 1 SL index                 = 17\n"
                                   "DSL 2 type                     = 2\n"
                                   "DSL 2 OCP index                = 33\n"
                                   "DSL 2 OCP lane index           = 34\n"
                                   "DSL 3 type                     = 3\n"
                                   "DSL 3 switched riser index     = 49\n"
                                   "DSL 3 SL index                 = 50\n"
                                   "DSL 4 type                     = 4\n"
                                   "Invalid DSL type\n";

// A record without DSLs and slots. Without DSLs it has no payloads, whatever their count says.
const Bytes bareRecord = joined({{0, 23}, text("", 8), text("ABCDEFGH", 8), {0, 0, 0}, {0}, {9}});
const std::string bareRecordText = "PICPWR ID                      = 0\n"
                                   "PAYLOAD SIZE                   = 23\n"
                                   "RISER PHYSICAL LOCATION        = \n"
                                   "MECH ASSY XPN                  = ABCDEFGH\n"
                                   "HWUID MSB                      = 0x00\n"
                                   "HWUID LSB                      = 0x00\n"
                                   "NO OF DSLs                     = 0\n"
                                   "NO OF SLOTS                    = 0\n"
                                   "NO OF DSL PAYLOADS             = 9\n";

std::string headingOf(int record) {
    return "\n\nPICPWR " + std::to_string(record) + " SLOT INFORMATION :\n\n";
}

std::string checksumText(int value) {
    return "\n\nCHECKSUM                       = " + std::to_string(value) + "\n\n\n";
}

TEST(RiserSlotMap, withoutRecordsHasItsChecksumBehindTheCount) {
    EXPECT_EQ(decoded(joined({front(0), {201, 1, 2}})), frontText(0) + checksumText(201));
}

TEST(RiserSlotMap, recordsFollowEachOther) {
    EXPECT_EQ(decoded(joined({front(3), fullRecord, bareRecord, fullRecord, {77}})),
              frontText(3) + headingOf(1) + fullRecordText + headingOf(2) + bareRecordText +
                  headingOf(3) + fullRecordText + checksumText(77));
}

TEST(RiserSlotMap, descriptionFillsItsField) {
    const std::string longest(48, 'd');
    EXPECT_EQ(decoded(joined({front(0, longest), {5}})), frontText(0, longest) + checksumText(5));
    EXPECT_EQ(decoded(joined({front(0, ""), {5}})), frontText(0, "") + checksumText(5));
}

TEST(RiserSlotMap, aTextWhoseNulIsThereIsShownThoughTheRestOfItsFieldIsNot) {
    const Bytes whole = joined({front(1, "Short"), {5, 33}, text("LOC", 8), text("XPN", 8)});
    const std::string config = "\n\nCONFIG DETAILS :\n\n"
                               "RISER CONFIG# MAJOR            = 3\n"
                               "RISER CONFIG# MINOR            = 17\n";
    const std::string described = config + "RISER CONFIG DESCRIPTION       = Short\n"
                                           "\n\nNON PICPWR SLOT INFORMATION :\n\n";
    EXPECT_EQ(decoded(cut(whole, 2 + 5)), config);     // behind the last letter
    EXPECT_EQ(decoded(cut(whole, 2 + 6)), described);  // behind the NUL
    EXPECT_EQ(decoded(cut(whole, 2 + 47)), described); // the field lacks one byte

    const std::string record = frontText(1, "Short") + headingOf(1) +
                               "PICPWR ID                      = 5\n"
                               "PAYLOAD SIZE                   = 33\n";
    const std::string located = record + "RISER PHYSICAL LOCATION        = LOC\n";
    EXPECT_EQ(decoded(cut(whole, 59 + 5)), record);
    EXPECT_EQ(decoded(cut(whole, 59 + 6)), located);
    EXPECT_EQ(decoded(cut(whole, 59 + 13)), located);
    EXPECT_EQ(decoded(cut(whole, 59 + 14)), located + "MECH ASSY XPN                  = XPN\n");
}

TEST(RiserSlotMap, theNextRecordStartsWhereTheSizeSays) {
    // The record is three bytes longer than its fields.
    Bytes longer = bareRecord;
    longer[1] = 26;
    std::string longerText = bareRecordText;
    longerText.replace(longerText.find("= 23"), 4, "= 26");
    EXPECT_EQ(decoded(joined({front(2), longer, {1, 2, 3}, bareRecord, {6}})),
              frontText(2) + headingOf(1) + longerText + headingOf(2) + bareRecordText +
                  checksumText(6));
}

TEST(RiserSlotMap, theNextRecordMayStartInsideTheOneBefore) {
    // The second record starts with the first one's last byte, 9.
    Bytes shorter = bareRecord;
    shorter[1] = 22;
    std::string shorterText = bareRecordText;
    shorterText.replace(shorterText.find("= 23"), 4, "= 22");
    Bytes second = bareRecord;
    second.erase(second.begin());
    std::string secondText = bareRecordText;
    secondText.replace(secondText.find("= 0\n"), 4, "= 9\n");
    EXPECT_EQ(decoded(joined({front(2), shorter, second, {6}})), frontText(2) + headingOf(1) +
                                                                     shorterText + headingOf(2) +
                                                                     secondText + checksumText(6));
}

TEST(RiserSlotMap, aRecordOfNoSizeIsListedAsOftenAsTheCountSays) {
    Bytes standing = bareRecord;
    standing[0] = 44; // also read as the checksum, because no record has a size
    standing[1] = 0;
    std::string standingText = bareRecordText;
    standingText.replace(standingText.find("= 0\n"), 4, "= 44\n");
    standingText.replace(standingText.find("= 23"), 4, "= 0");
    std::string expected = frontText(255);
    for (int r = 1; r <= 255; ++r) {
        expected += headingOf(r) + standingText;
    }
    EXPECT_EQ(decoded(joined({front(255), standing})), expected + checksumText(44));
}

TEST(RiserSlotMap, countsReachTheirHighestValue) {
    Bytes record = joined({{1, 0}, text("", 16), {0, 0, 255}});
    std::string expected = frontText(1) + headingOf(1) +
                           "PICPWR ID                      = 1\n"
                           "PAYLOAD SIZE                   = 0\n"
                           "RISER PHYSICAL LOCATION        = \n"
                           "MECH ASSY XPN                  = \n"
                           "HWUID MSB                      = 0x00\n"
                           "HWUID LSB                      = 0x00\n"
                           "NO OF DSLs                     = 255\n";
    for (int k = 1; k <= 255; ++k) {
        record.push_back(static_cast<std::uint8_t>(k));
        expected +=
            "DSL" + std::to_string(k) + "                           = " + std::to_string(k) + "\n";
    }
    record.push_back(255);
    expected += "NO OF SLOTS                    = 255\n";
    for (int j = 1; j <= 255; ++j) {
        record.push_back(static_cast<std::uint8_t>(j));
        record.push_back(7);
        expected += "SLOT" + std::to_string(j) +
                    " NUMBER                   = " + std::to_string(j) + "\nSLOT" +
                    std::to_string(j) + " TYPE                     = 7\n";
    }
    record.push_back(0);
    expected += "NO OF DSL PAYLOADS             = 0\n";
    for (int k = 1; k <= 255; ++k) {
        record = joined({record, {1, static_cast<std::uint8_t>(k), 0, 0}});
        expected += "DSL " + std::to_string(k) + " type                     = 1\nDSL " +
                    std::to_string(k) + " SL index                 = " + std::to_string(k) + "\n";
    }
    EXPECT_EQ(decoded(joined({front(1), record})), expected + checksumText(1));
}

TEST(RiserSlotMap, twoDslsHaveTwoPayloadsWhateverTheirCountSays) {
    EXPECT_EQ(decoded(joined({front(1),
                              {5, 33},
                              text("LOC", 8),
                              text("XPN", 8),
                              {0, 0, 2},
                              {1, 2},
                              {0},
                              {1},
                              {1, 10, 0, 0},
                              {1, 11, 0, 0},
                              {8}})),
              frontText(1) + headingOf(1) +
                  "PICPWR ID                      = 5\n"
                  "PAYLOAD SIZE                   = 33\n"
                  "RISER PHYSICAL LOCATION        = LOC\n"
                  "MECH ASSY XPN                  = XPN\n"
                  "HWUID MSB                      = 0x00\n"
                  "HWUID LSB                      = 0x00\n"
                  "NO OF DSLs                     = 2\n"
                  "DSL1                           = 1\n"
                  "DSL2                           = 2\n"
                  "NO OF SLOTS                    = 0\n"
                  "NO OF DSL PAYLOADS             = 1\n"
                  "DSL 1 type                     = 1\n"
                  "DSL 1 SL index                 = 10\n"
                  "DSL 2 type                     = 1\n"
                  "DSL 2 SL index                 = 11\n" +
                  checksumText(8));
}

TEST(RiserSlotMap, endsWhereItsBytesEnd) {
    const Bytes blob = joined({front(2), fullRecord, bareRecord, {77}});
    const std::string whole = frontText(2) + headingOf(1) + fullRecordText + headingOf(2) +
                              bareRecordText + checksumText(77);
    struct Cut {
        std::size_t bytes;
        const char* firstMissing;
    };
    for (const Cut& end : {
             Cut{0, "RISER CONFIG# MAJOR"},
             Cut{1, "RISER CONFIG# MINOR"},
             Cut{2, "RISER CONFIG DESC"},
             Cut{18, "RISER CONFIG DESC"}, // without the NUL behind its 16 letters
             Cut{19, "KARN CARD PRESENCE"},
             Cut{49, "KARN CARD PRESENCE"},
             Cut{50, "KARN CARD PRESENCE"},
             Cut{57, "EMBEDDED OCP NIC SLOT TYPE"},
             Cut{58, "NUMBER OF PICPWR"},
             Cut{59, "PICPWR ID"},
             Cut{60, "PAYLOAD SIZE"},
             Cut{61, "RISER PHYSICAL LOCATION"},
             Cut{68, "RISER PHYSICAL"},
             Cut{69, "MECH ASSY XPN"},
             Cut{72, "MECH ASSY XPN"}, // without the NUL behind its three letters
             Cut{73, "HWUID MSB                      = 0x12"},
             Cut{76, "HWUID MSB                      = 0x12"},
             Cut{77, "HWUID MSB                      = 0x12"},
             Cut{79, "NO OF DSLs"},
             Cut{80, "DSL1 "},
             Cut{83, "DSL4 "},
             Cut{84, "NO OF SLOTS"},
             Cut{85, "SLOT1 NUMBER"},
             Cut{86, "SLOT1 TYPE"},
             Cut{91, "NO OF DSL PAYLOADS"},
             Cut{92, "DSL 1 type"},
             Cut{93, "DSL 1 SL index"},
             Cut{96, "DSL 2 type"},
             Cut{98, "DSL 2 OCP lane index"},
             Cut{102, "DSL 3 SL index"},
             Cut{104, "DSL 4 type"},
         }) {
        EXPECT_EQ(decoded(cut(blob, end.bytes)), whole.substr(0, whole.find(end.firstMissing)))
            << end.bytes;
    }
    // The report shows only the type byte of a DSL of an unknown type.
    EXPECT_EQ(decoded(cut(blob, 105)), frontText(2) + headingOf(1) + fullRecordText + headingOf(2));
    EXPECT_EQ(decoded(cut(blob, blob.size() - 1)),
              frontText(2) + headingOf(1) + fullRecordText + headingOf(2) + bareRecordText);
}

} // namespace
} // namespace zolt::riser_slot_map_decoder_test
