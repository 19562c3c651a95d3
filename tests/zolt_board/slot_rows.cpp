// Rows of slots and payloads.
#include "tests/zolt_board/finding_rows.h"

namespace zolt_board::test {

namespace {

// A slot whose discovery has ended, with the keys of its module.
std::string slotWith(const std::string& module) {
    return "[[slot]]\nid = 5\ndstat = 3\n[slot.module]\n" + module;
}

// A slot whose payload has these bytes.
std::string slotOf(const std::string& keys, const std::string& payload) {
    return "[[slot]]\nid = 5\ndstat = 3\n" + keys + "\npayload = \"" + payload + "\"\n";
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    while (count-- > 0) {
        all += text;
    }
    return all;
}

const std::string puck = "01 1A 02 00 00 01 00 02 00 00 00 00 00 00 00 E0";

} // namespace

std::vector<FindingRow> slotRows() {
    return {
        {Kind::absentSlotWithPayload,
         "payload",
         "[[slot]]\nid = 5\npayload = \"" + puck + "\"",
         {"warning: absent-slot-with-payload: slot 5: DSTAT is 0, and there is a payload of 16 "
          "bytes; expected no payload, or a DSTAT of 1 to 3"},
         "[[slot]]\nid = 5\ndstat = 1\npayload = \"" + puck + "\""},
        {Kind::absentSlotWithPayload,
         "oem_area",
         "[[slot]]\nid = 5\noem_area = \"03 00 FD\"",
         {"warning: absent-slot-with-payload: slot 5: DSTAT is 0, and there is an OEM area of 3 "
          "bytes; expected no payload, or a DSTAT of 1 to 3"},
         "[[slot]]\nid = 5"},
        {Kind::presentSlotWithoutPayload,
         "zeros",
         "[[slot]]\nid = 5\ndstat = 3\npayload_offset = 32",
         {"warning: present-slot-without-payload: slot 5: DSTAT is 3, and the 13 bytes at payload "
          "offset 32 are 0; expected the header of a payload"},
         "[[slot]]\nid = 5\ndstat = 2\npayload_offset = 32"},
        {Kind::classRegisterDiffers,
         "class",
         slotWith("device_class = 0x11") + "\n[override.named]\nPICPWR_5_MOD_CLASS = 0x12\n"
                                           "[override.raw]\n0x1039 = 0x12",
         {"error: class-register-differs: slot 5: the class register has 0x12, the payload 0x11; "
          "expected one class"},
         slotWith("device_class = 0x11") + "\n[override.named]\nPICPWR_5_MOD_CLASS = 0x11\n"
                                           "[override.raw]\n0x1039 = 0x11"},
        {Kind::payloadOutsideBlock,
         "offset",
         "[[slot]]\nid = 5\ndstat = 3\npayload_offset = 24563",
         {"error: payload-outside-block: slot 5 payload: payload and OEM area are at payload "
          "offsets 24563 to 24575; expected a place within the 24575 bytes of the payload block"},
         slotOf("payload_offset = 24559", puck)},
        {Kind::payloadShorterThanStated,
         "stated",
         slotOf("", "01 1A 03 00 00 01 00 02 00 00 00 00 00 00 00 E0"),
         {"error: payload-shorter-than-stated: slot 5 payload: the payload states 24 bytes and has "
          "16; expected the stated bytes"},
         slotOf("", puck)},
        {Kind::payloadShorterThanStated,
         "fetched",
         "[[slot]]\nid = 5\ndstat = 3\nmodule_class = 0x14\n"
         "[override.raw]\n0x2A01 = [1, 0x14, 31]",
         {"error: payload-shorter-than-stated: slot 5 payload: the payload states 248 bytes, "
          "readers get 247; expected the stated bytes"},
         "[[slot]]\nid = 5\ndstat = 3\nmodule_class = 0x14\n"
         "[override.raw]\n0x2A01 = [1, 0x14, 30]"},
        {Kind::payloadShorterThanStated,
         "delivered",
         slotOf("", puck) + "[hal.PICPWR_PAYLOADS]\nmost_bytes = 12",
         {"error: payload-shorter-than-stated: slot 5 payload: readers get 12 bytes; expected a "
          "header of 13 bytes"},
         slotOf("", puck) + "[hal.PICPWR_PAYLOADS]\nmost_bytes = 16"},
        {Kind::payloadLongerThanStated,
         "stated",
         slotOf("", puck + repeated(" 00", 8)),
         {"warning: payload-longer-than-stated: slot 5 payload: the payload states 16 bytes and "
          "has 24; expected the stated bytes"},
         slotOf("", puck)},
        {Kind::payloadFieldsBeyondSize,
         "header",
         slotOf("", "01 11 01 00 00 01 00 02"),
         {"error: payload-fields-beyond-size: slot 5 payload: the payload states 8 bytes; expected "
          "room for the header, 13 bytes",
          "error: checksum-outside: slot 5 payload: byte 7, the place of the checksum, is one of "
          "the header; expected the checksum at byte 13 or behind"},
         slotOf("", "01 11 02 00 00 01 00 02 00 00 00 00 00 00 00 00")},
        {Kind::payloadFieldsBeyondSize,
         "backplane",
         slotOf("", "01 2A 02 00 00 01 00 02 00 00 00 00 00 00 00 00"),
         {"error: payload-fields-beyond-size: slot 5 payload: the payload states 16 bytes; "
          "expected room for the header and the backplane descriptor, 20 bytes"},
         slotOf("", "01 2A 03 00 00 01 00 02 00 00 00 00 00 00 00 00" + repeated(" 00", 8))},
        {Kind::endPointsBeyondSize,
         "count",
         slotOf("", "01 11 03 00 00 01 00 02 00 00 00 02 00" + repeated(" 00", 11)),
         {"error: end-points-beyond-size: slot 5 payload: end point 2 ends with byte 24, the "
          "payload states 24 bytes; expected end points within the stated length"},
         slotOf("", "01 11 03 00 00 01 00 02 00 00 00 01 00" + repeated(" 00", 11))},
        // A puck has no end points, so nobody asks for their number.
        {Kind::endPointsBeyondSize,
         "class",
         slotOf("", "01 11 02 00 00 01 00 02 00 00 00 1F 00 00 00 00"),
         {"error: end-points-beyond-size: slot 5 payload: end point 31 ends with byte 198, the "
          "payload states 16 bytes; expected end points within the stated length"},
         slotOf("", "01 1A 02 00 00 01 00 02 00 00 00 1F 00 00 00 00")},
        {Kind::checksumOutside,
         "no_length",
         slotOf("", "01 11 00 00 00 01 00 02"),
         {"warning: payload-longer-than-stated: slot 5 payload: the payload states 0 bytes and has "
          "8; expected the stated bytes",
          "error: payload-fields-beyond-size: slot 5 payload: the payload states 0 bytes; expected "
          "room for the header, 13 bytes",
          "error: checksum-outside: slot 5 payload: the payload states no length, so it has no "
          "last "
          "byte; expected the checksum in the last byte"},
         slotOf("", "01 11 02 00 00 01 00 02 00 00 00 00 00 00 00 00")},
        // Puck: always byte 15.
        {Kind::checksumOutside,
         "puck",
         slotOf("", "01 1A 01 00 00 01 00 02"),
         {"error: payload-fields-beyond-size: slot 5 payload: the payload states 8 bytes; expected "
          "room for the header, 13 bytes",
          "error: checksum-outside: slot 5 payload: the checksum is byte 15, the payload states 8 "
          "bytes; expected the checksum within the stated length"},
         slotOf("", puck)},
        // Readers take the first byte of slot 6 for the length of an OEM area of slot 5.
        {Kind::payloadsOverlap,
         "area",
         slotOf("payload_offset = 0", puck) +
             "[[slot]]\nid = 6\ndstat = 3\npayload_offset = 16\npayload = \"" + puck + "\"",
         {"error: payloads-overlap: slot 6 payload: payload and OEM area are at payload offsets 16 "
          "to 31, those of slot 5 at payload offsets 0 to 16; expected bytes of its own for each "
          "slot",
          "error: oem-area-too-short: slot 5 OEM area: the area states 1 byte; expected room for "
          "its length, its number of descriptors and its checksum, 3 bytes"},
         slotOf("payload_offset = 0", puck) +
             "[[slot]]\nid = 6\ndstat = 3\npayload_offset = 17\npayload = \"" + puck + "\""},
        {Kind::payloadsOverlap,
         "same_place",
         slotOf("", puck) + "[[slot]]\nid = 6\ndstat = 3\nmodule_class = 0x1A",
         {"error: payloads-overlap: slot 6 payload: payload and OEM area are at payload offsets 0 "
          "to 15, those of slot 5 at payload offsets 0 to 15; expected bytes of its own for each "
          "slot"},
         slotOf("", puck) + "[[slot]]\nid = 6\ndstat = 2\nmodule_class = 0x1A"},
    };
}

} // namespace zolt_board::test
