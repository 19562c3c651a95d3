// Rows of OEM areas, the riser slot mapping and the registers.
#include "tests/zolt_board/finding_rows.h"

#include <cstddef>

namespace zolt_board::test {

namespace {

// A puck of 16 bytes with an OEM area behind it.
std::string puckWith(const std::string& area) {
    return "[[slot]]\nid = 5\ndstat = 3\noem_area = \"" + area +
           "\"\npayload = \"01 1A 02 00 00 01 00 02 00 00 00 00 00 00 00 E0\"\n";
}

// The longest payload, 240 bytes, with an OEM area behind it: readers fetch 375 bytes.
std::string cardWithArea(int size, const std::string& rest) {
    return "[[slot]]\nid = 5\ndstat = 3\nmodule_class = 0x14\n[override.raw]\n"
           "0x2A01 = [1, 0x14, 30]\n0x2AF1 = [" +
           std::to_string(size) + rest + "]\n";
}

std::string zeros(int count) {
    std::string text;
    while (count-- > 0) {
        text += "0, ";
    }
    return text;
}

std::string riserMapWith(const std::string& keys) {
    return "[riser_map]\n" + keys;
}

std::string recordWith(const std::string& keys) {
    return riserMapWith("[[riser_map.record]]\n" + keys);
}

// A mapping of 1024 bytes with ten records of 87 bytes. The last record begins at byte 929, and has
// so many card slots.
std::string mapWithLastSlots(unsigned char slots) {
    constexpr std::size_t head = 59;
    constexpr std::size_t recordCount = 11;
    std::vector<unsigned char> bytes(head);
    bytes.back() = recordCount;
    for (std::size_t i = 1; i <= recordCount; ++i) {
        const unsigned char own = i == recordCount ? slots : 32;
        const std::size_t start = bytes.size();
        bytes.resize(start + 23 + 2 * std::size_t{own});
        bytes[start] = 1;
        bytes[start + 1] = static_cast<unsigned char>(bytes.size() - start);
        bytes[start + 21] = own;
    }
    bytes.resize(1024);
    std::string text;
    for (const unsigned char byte : bytes) {
        text += std::to_string(byte) + ",";
    }
    return "[riser_map]\nbytes = [" + text + "]\n";
}

} // namespace

std::vector<FindingRow> oemAreaRows() {
    return {
        {Kind::oemAreaTooShort,
         "length",
         puckWith("02 00"),
         {"error: oem-area-too-short: slot 5 OEM area: the area states 2 bytes; expected room for "
          "its length, its number of descriptors and its checksum, 3 bytes"},
         puckWith("03 00 FD")},
        {Kind::oemAreaNotFetched,
         "length",
         cardWithArea(136, ", 0"),
         {"error: oem-area-not-fetched: slot 5 OEM area: the area ends with byte 375 behind the "
          "start of the payload; expected an end within the 375 bytes that readers get"},
         cardWithArea(135, ", 0")},
        // Descriptors that readers do not get are not looked at.
        {Kind::oemAreaNotFetched,
         "descriptors",
         cardWithArea(255, ", 2, 9, 133, 1, 0"),
         {"error: oem-area-not-fetched: slot 5 OEM area: the area ends with byte 494 behind the "
          "start of the payload; expected an end within the 375 bytes that readers get"},
         cardWithArea(135, ", 1, 9, 132")},
        {Kind::oemDescriptorTooShort,
         "connection",
         puckWith("07 01 01 03 22 62 00"),
         {"error: oem-descriptor-too-short: slot 5 OEM area: descriptor 1 of type 1 states 3 "
          "bytes; expected at least 4 bytes"},
         puckWith("07 01 01 04 22 62 00")},
        {Kind::oemDescriptorTooShort,
         "unknown_type",
         puckWith("05 01 09 01 00"),
         {"error: oem-descriptor-too-short: slot 5 OEM area: descriptor 1 of type 9 states 1 byte; "
          "expected at least 2 bytes"},
         puckWith("05 01 09 02 00")},
        {Kind::oemDescriptorsBeyondArea,
         "length",
         puckWith("06 01 03 04 FF 00"),
         {"error: oem-descriptors-beyond-area: slot 5 OEM area: descriptor 1 of 1 ends with byte 5 "
          "of the area; expected an end before the checksum at byte 5"},
         puckWith("06 01 03 03 FF 00")},
        {Kind::oemDescriptorsBeyondArea,
         "count",
         puckWith("06 02 03 03 FF 00"),
         {"error: oem-descriptors-beyond-area: slot 5 OEM area: descriptor 2 of 2 ends with byte 6 "
          "of the area; expected an end before the checksum at byte 5"},
         puckWith("06 00 03 03 FF 00")},
    };
}

std::vector<FindingRow> riserMapRows() {
    return {
        {Kind::riserRecordBeyondMap,
         "slots",
         mapWithLastSlots(37),
         {"error: riser-record-beyond-map: riser map record 11: the record begins at byte 929 and "
          "its counts lead behind the map; expected an end within the 1024 bytes of the map"},
         mapWithLastSlots(35)},
        {Kind::riserRecordBeyondMap,
         "head",
         "faults = [\"raw-read 0x8A00\"]\n[riser_map]\nbytes = [" + zeros(58) + "1, 1, 23]",
         {"error: riser-record-beyond-map: riser map record 1: the record begins at byte 59 and "
          "its "
          "counts lead behind the map; expected an end within the 61 bytes of the map"},
         "faults = [\"raw-read 0x8A00\"]\n[riser_map]\nbytes = [" + zeros(58) + "0, 1, 23]"},
        {Kind::riserRecordSizeDiffers,
         "shorter",
         recordWith("picpwr = 1\npayload_size = 22"),
         {"error: riser-record-size-differs: riser map record 1: the record states 22 bytes; "
          "expected the 23 bytes of its counts"},
         recordWith("picpwr = 1\npayload_size = 23")},
        {Kind::riserRecordSizeDiffers,
         "zero",
         recordWith("picpwr = 1\npayload_size = 0\n[[riser_map.record]]\npicpwr = 64"),
         {"error: riser-record-size-differs: riser map record 1: the record states 0 bytes; "
          "expected the 23 bytes of its counts"},
         recordWith("picpwr = 1\n[[riser_map.record]]\npicpwr = 63")},
        {Kind::riserRouteCountDiffers,
         "count",
         recordWith("picpwr = 1\ndsl_payloads = 0\n[[riser_map.record.dsl]]\ntype = 1"),
         {"warning: riser-route-count-differs: riser map record 1: the record states 0 DSL "
          "payloads "
          "and 1 DSL; expected one payload for each DSL"},
         recordWith("picpwr = 1\ndsl_payloads = 1\n[[riser_map.record.dsl]]\ntype = 1")},
        {Kind::dslTypeOutOfRange,
         "types",
         recordWith("picpwr = 1\n[[riser_map.record.dsl]]\ntype = 4\n[[riser_map.record.dsl]]\n"
                    "type = 3\n[[riser_map.record.dsl]]\ntype = 0"),
         {"error: dsl-type-out-of-range: riser map record 1: DSL 1 has type 4, DSL 3 has type 0; "
          "expected type 1, 2 or 3"},
         recordWith("picpwr = 1\n[[riser_map.record.dsl]]\ntype = 1\n[[riser_map.record.dsl]]\n"
                    "type = 3\n[[riser_map.record.dsl]]\ntype = 2")},
        {Kind::picpwrOutOfRange,
         "record_0",
         recordWith("picpwr = 0"),
         {"error: picpwr-out-of-range: riser map record 1: the PICPWR ID is 0; expected 1 to 63"},
         recordWith("picpwr = 1")},
        {Kind::picpwrOutOfRange,
         "record_64",
         recordWith("picpwr = 64"),
         {"error: picpwr-out-of-range: riser map record 1: the PICPWR ID is 64; expected 1 to 63"},
         recordWith("picpwr = 63")},
        {Kind::textWithoutEnd,
         "description",
         riserMapWith("description = \"012345678901234567890123456789012345678901234567\""),
         {"warning: text-without-end: riser map description: all 48 characters are in use; "
          "expected "
          "a NUL at the end"},
         riserMapWith("description = \"01234567890123456789012345678901234567890123456\"")},
        {Kind::checksumOutside,
         "riser_map",
         mapWithLastSlots(36),
         {"error: checksum-outside: riser map: the checksum follows the records, at byte "
          "1024; expected the checksum within the 1024 bytes of the map"},
         mapWithLastSlots(35)},
    };
}

std::vector<FindingRow> registerRows() {
    return {
        {Kind::viewsDisagree,
         "slot",
         "[override.named]\nPICPWR_63_PAYLOAD_OFFSET = [1, 0]",
         {"error: views-disagree: PICPWR_63_PAYLOAD_OFFSET: the name delivers 01 00, the address "
          "00 "
          "00; expected the same by name and by address"},
         "[override.named]\nPICPWR_63_PAYLOAD_OFFSET = [1, 0]\n[override.raw]\n0x1367 = 1"},
        {Kind::viewsDisagree,
         "no_bytes",
         "[override.named]\nPICPWR_1_DPEN = []",
         {"error: views-disagree: PICPWR_1_DPEN: the name delivers no bytes, the address 0x00; "
          "expected the same by name and by address"},
         "faults = [\"named-read PICPWR_1_DPEN\"]\n[override.named]\nPICPWR_1_DPEN = []"},
        {Kind::viewsDisagree,
         "control",
         "faults = [\"raw-read 0x1405 once\"]\n[override.raw]\n0x1400 = 0x08",
         {"error: views-disagree: BP_1_VWIRE_SMBUS_RST: the name delivers 0x00, the address 0x01; "
          "expected the same by name and by address"},
         "faults = [\"raw-read 0x1400\"]\n[override.raw]\n0x1400 = 0x08"},
        // No name shows the reset of a backplane.
        {Kind::viewsDisagree,
         "field",
         "[override.raw]\n0x1400 = 0x01",
         {"error: views-disagree: BP_1_VWIRE_DOWNSTREAM_MODE: the name delivers 0x00, the address "
          "0x01; expected the same by name and by address"},
         "[override.raw]\n0x1400 = 0x04"},
        {Kind::viewsDisagree,
         "riser_map",
         "[override.raw]\n0x8DFF = 7",
         {"error: views-disagree: RISER_SLOT_AMP_BLOB: byte 1023 is 0x00 by name and 0x07 by "
          "address; expected the same by name and by address"},
         "[override.raw]\n0x8E00 = 7"},
        {Kind::viewsDisagree,
         "riser_map_size",
         riserMapWith("bytes = [1, 2, 3]"),
         {"error: views-disagree: RISER_SLOT_AMP_BLOB: the name delivers 3 bytes, the addresses "
          "1024; expected the same by name and by address"},
         riserMapWith("config_major = 1\nconfig_minor = 2\ndescription = \"\\u0003\"")},
        {Kind::picpwrOutOfRange,
         "control_64",
         "[[puck]]\nid = 16\npicpwr_index = 64",
         {"error: picpwr-out-of-range: PUCK_16_PICPWR_INDEX: the PICPWR index is 64; expected 1 to "
          "63, or 0 or 128 to 255 for no module"},
         "[[puck]]\nid = 16\npicpwr_index = 63"},
        {Kind::picpwrOutOfRange,
         "control_127",
         "[[remote_fan]]\npicpwr_index = 127",
         {"error: picpwr-out-of-range: REMOTE_FAN_PICPWR_INDEX: the PICPWR index is 127; expected "
          "1 to 63, or 0 or 128 to 255 for no module"},
         "[[remote_fan]]\npicpwr_index = 128"},
    };
}

} // namespace zolt_board::test
