#include "board/riser_map.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

// Returns the blob of these keys, the first of which stands in line 2.
Bytes blobOf(const std::string& keys) {
    return test::boardOf("[riser_map]\n" + keys, "b.toml").riserMap;
}

Bytes part(const Bytes& blob, std::size_t start, std::size_t length) {
    const auto first = blob.begin() + static_cast<std::ptrdiff_t>(start);
    return {first, first + static_cast<std::ptrdiff_t>(length)};
}

std::string repeated(const char* text, int count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

TEST(RiserMap, boardWithoutAMapHasZeros) {
    EXPECT_EQ(test::boardOf("", "b").riserMap, Bytes(1024));
}

TEST(RiserMap, headHasEveryFieldInItsPlace) {
    const Bytes blob = blobOf(R"(
config_major = 1
config_minor = 2
description = "Two risers"
karn_present = 3
karn_hwuid = 0x1234
karn_slot_number = 4
karn_slot_type = 5
ocp_present = 6
ocp_slot_number = 7
ocp_slot_type = 8
)");
    Bytes expected{1, 2, 'T', 'w', 'o', ' ', 'r', 'i', 's', 'e', 'r', 's'};
    expected.resize(50);
    expected.insert(expected.end(), {3, 0x12, 0x34, 4, 5, 6, 7, 8, 0, 0xA4});
    expected.resize(1024);
    EXPECT_EQ(blob, expected);
}

TEST(RiserMap, recordsLieOneBehindTheOther) {
    const Bytes blob = blobOf(R"(
[[riser_map.record]]
picpwr = 5
location = "RISER 1"
part_number = "P12345-6"
hwuid = 0xBEEF
slots = [1, 2, 3, 4]
[[riser_map.record.dsl]]
id = 0x11
type = 1
sl_index = 0x21
[[riser_map.record.dsl]]
id = 0x12
type = 2
ocp_index = 0x22
ocp_lane_index = 0x23
[[riser_map.record.dsl]]
id = 0x13
type = 3
switched_riser_index = 0x24
sl_index = 0x25
[[riser_map.record.dsl]]
id = 0x14
type = 9
[[riser_map.record]]
picpwr = 6
)");
    EXPECT_EQ(part(blob, 58, 1), Bytes{2});
    EXPECT_EQ(part(blob, 59, 47), (Bytes{5,    47,                                    //
                                         'R',  'I',  'S',  'E',  'R',  ' ', '1', 0,   //
                                         'P',  '1',  '2',  '3',  '4',  '5', '-', '6', //
                                         0xBE, 0xEF,                                  //
                                         4,    0x11, 0x12, 0x13, 0x14,                //
                                         2,    1,    2,    3,    4,                   //
                                         4,                                           //
                                         1,    0x21, 0,    0,                         //
                                         2,    0x22, 0x23, 0,                         //
                                         3,    0x24, 0x25, 0,                         //
                                         9,    0,    0,    0}));
    Bytes empty{6, 23};
    empty.resize(23);
    EXPECT_EQ(part(blob, 106, 23), empty);
    EXPECT_EQ(checksumOf(part(blob, 0, 130)), 0); // including the checksum
    EXPECT_EQ(part(blob, 130, 894), Bytes(894));
}

TEST(RiserMap, countsSizesAndChecksumMayBeWrong) {
    const Bytes blob = blobOf(R"(
records = 255
checksum = 0x77
[[riser_map.record]]
payload_size = 1
dsl_payloads = 200
)");
    EXPECT_EQ(part(blob, 58, 3), (Bytes{255, 0, 1}));
    EXPECT_EQ(part(blob, 81, 2), (Bytes{200, 0x77}));
}

TEST(RiserMap, bytesReplaceTheWholeBlob) {
    EXPECT_EQ(blobOf("bytes = [1, 2, 3]"), (Bytes{1, 2, 3}));
    EXPECT_EQ(blobOf("bytes = []"), Bytes{});
    EXPECT_EQ(blobOf("bytes = '" + repeated("FF ", 1025) + "'"), Bytes(1025, 0xFF));
}

TEST(RiserMap, longestFieldsAreAccepted) {
    const Bytes blob = blobOf("description = '" + repeated("x", 48) +
                              "'\n[[riser_map.record]]\nlocation = '12345678'\n"
                              "part_number = '12345678'\nslots = [" +
                              repeated("7,", 232) + "]\n");
    EXPECT_EQ(part(blob, 2, 48), Bytes(48, 'x'));
    EXPECT_EQ(blob[60], 255); // length of the record
    EXPECT_EQ(blob[80], 116); // slots
}

TEST(RiserMap, fullBlobHasItsChecksumInTheLastByte) {
    // 3 records of 255 bytes and one of 199. Only their lengths and numbers of slots are not 0.
    const auto record = [](int slotBytes) {
        return "[[riser_map.record]]\nslots = [" + repeated("0,", slotBytes) + "]\n";
    };
    const Bytes blob = blobOf(record(232) + record(232) + record(232) + record(176));
    EXPECT_EQ(checksumOf(part(blob, 0, 1023)), blob[1023]);
    EXPECT_NE(blob[1023], 0);
}

TEST(RiserMap, refusesWithFileLineAndReason) {
    const std::string fullRecord = "[[riser_map.record]]\nslots = [" + repeated("0,", 232) + "]\n";
    const std::pair<std::string, const char*> cases[] = {
        {"config_major = 256",
         "b.toml:2: riser_map: 'config_major' must be a whole number from 0 to 255"},
        {"karn_hwuid = 65536",
         "b.toml:2: riser_map: 'karn_hwuid' must be a whole number from 0 to 65535"},
        {"records = 256", "b.toml:2: riser_map: 'records' must be a whole number from 0 to 255"},
        {"checksum = -1", "b.toml:2: riser_map: 'checksum' must be a whole number from 0 to 255"},
        {"description = '" + repeated("x", 49) + "'",
         "b.toml:2: riser_map: 'description' has more than 48 characters"},
        {"bytes = [1]\nconfig_major = 1",
         "b.toml:3: riser_map: 'config_major' is a key only where 'bytes' is not given"},
        {"bytes = [1]\nrecords = 1",
         "b.toml:3: riser_map: 'records' is a key only where 'bytes' is not given"},
        {"colour = 1", "b.toml:2: riser_map: 'colour' is not a key here"},
        {"record = 1", "b.toml:2: riser_map: 'record' must be an array of tables, [[record]]"},
        {fullRecord + fullRecord + fullRecord + fullRecord,
         "b.toml:1: riser_map: has 1080 bytes, at most 1024 fit"},
        // records
        {"[[riser_map.record]]\npicpwr = 256",
         "b.toml:3: record: 'picpwr' must be a whole number from 0 to 255"},
        {"[[riser_map.record]]\nhwuid = 65536",
         "b.toml:3: record: 'hwuid' must be a whole number from 0 to 65535"},
        {"[[riser_map.record]]\nlocation = '123456789'",
         "b.toml:3: record: 'location' has more than 8 characters"},
        {"[[riser_map.record]]\npart_number = '123456789'",
         "b.toml:3: record: 'part_number' has more than 8 characters"},
        {"[[riser_map.record]]\nslots = [1, 2, 3]",
         "b.toml:3: record: 'slots' needs two bytes for each slot, number and type"},
        {"[[riser_map.record]]\npayload_size = 1\nslots = [" + repeated("0,", 512) + "]",
         "b.toml:4: record: 'slots' has more than 255 slots"},
        {"[[riser_map.record]]\nslots = [" + repeated("0,", 234) + "]",
         "b.toml:2: record: has more than 255 bytes"},
        {"[[riser_map.record]]\npayload_size = 256",
         "b.toml:3: record: 'payload_size' must be a whole number from 0 to 255"},
        {"[[riser_map.record]]\ndsl_payloads = 256",
         "b.toml:3: record: 'dsl_payloads' must be a whole number from 0 to 255"},
        // downstream links
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\nid = 1",
         "b.toml:3: dsl: 'type' is missing"},
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\ntype = 1\nid = 256",
         "b.toml:5: dsl: 'id' must be a whole number from 0 to 255"},
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\ntype = 1\nocp_index = 1",
         "b.toml:5: dsl: 'ocp_index' is a key only where 'type' is 2"},
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\ntype = 4\nsl_index = 1",
         "b.toml:5: dsl: 'sl_index' is a key only where 'type' is 1 or 3"},
        {"[[riser_map.record]]\n[[riser_map.record.dsl]]\ntype = 3\nsl_index = 256",
         "b.toml:5: dsl: 'sl_index' must be a whole number from 0 to 255"},
    };
    for (const auto& [keys, message] : cases) {
        EXPECT_EQ(test::refusalOf("[riser_map]\n" + std::string(keys)), message) << keys;
    }
}

} // namespace
} // namespace board
