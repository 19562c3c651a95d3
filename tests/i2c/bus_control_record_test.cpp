#include "i2c/bus_control_record.h"

#include "tests/support/bus_devices.h"

#include <gtest/gtest.h>

namespace zolt::test {

namespace {

Bytes bytesIn(const BusControlRecord& record) {
    return {record.bytes().begin(), record.bytes().end()};
}

TEST(BusControlRecord, AnUpdateHasEveryFieldInItsPlace) {
    BusControlRecord record(BusCommand::updateProperty);
    record.set(update_property::index, 0x01020304);
    record.set(update_property::target, 0x11121314);
    record.set(update_property::value, 0x21222324);
    record.set(update_property::propertyId, 0x31323334);
    record.set(update_property::typeName, "KARN_NON_RAID");
    EXPECT_EQ(bytesIn(record), bytesOf(R"(
        54 45 53 4B 04 00 00 00 04 03 02 01 14 13 12 11
        24 23 22 21 34 33 32 31 4B 41 52 4E 5F 4E 4F 4E
        5F 52 41 49 44 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00)"));
}

TEST(BusControlRecord, AQueryHasEveryFieldInItsPlace) {
    BusControlRecord record(BusCommand::getProperty);
    record.set(get_property::target, 0x1A);
    record.set(get_property::propertyId, 7);
    EXPECT_EQ(bytesIn(record), bytesOf(R"(
        54 45 53 4B 05 00 00 00 1A 00 00 00 07 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00)"));
}

TEST(BusControlRecord, ACreationHasEveryFieldInItsPlace) {
    BusControlRecord record(BusCommand::createNode);
    record.set(create_node::index, 0x01020304);
    record.set(create_node::property10, 0x11121314);
    for (std::uint32_t i = 0; i < create_node::devicePart.size(); ++i) {
        record.set(create_node::devicePart[i], 0xD0C0B0A0 + i);
    }
    record.set(create_node::target, 0x21222324);
    record.set(create_node::property8, 0x31323334);
    record.set(create_node::typeName, "PUCK");
    record.set(create_node::devicePath, "/dev/i2c-20");
    EXPECT_EQ(bytesIn(record), bytesOf(R"(
        54 45 53 4B 06 00 00 00 00 00 00 00 00 00 00 00
        00 00 04 03 02 01 00 00 00 00 00 00 00 00 14 13
        12 11 00 00 00 00 A0 B0 C0 D0 A1 B0 C0 D0 A2 B0
        C0 D0 A3 B0 C0 D0 A4 B0 C0 D0 A5 B0 C0 D0 A6 B0
        C0 D0 A7 B0 C0 D0 24 23 22 21 34 33 32 31 50 55
        43 4B 00 00 00 00 00 00 00 00 00 00 00 00 2F 64
        65 76 2F 69 32 63 2D 32 30 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
        00 00 00 00)"));
}

TEST(BusControlRecord, ARemovalHasItsTargetAtByte8) {
    BusControlRecord record(BusCommand::removeDevice);
    record.set(remove_device::target, 0x50);
    EXPECT_EQ(bytesIn(record),
              controlRecord({{0, "54 45 53 4B"}, {4, "07 00 00 00"}, {8, "50 00 00 00"}}));
}

TEST(BusControlRecord, ARecoveryHasItsModeAtByte8) {
    BusControlRecord record(BusCommand::recoverBus);
    record.set(recover_bus::mode, 98);
    EXPECT_EQ(bytesIn(record),
              controlRecord({{0, "54 45 53 4B"}, {4, "08 00 00 00"}, {8, "62 00 00 00"}}));
}

TEST(BusControlRecord, ALongTextIsCutToLeaveRoomForItsTerminator) {
    BusControlRecord record(BusCommand::updateProperty);
    record.set(update_property::typeName, "ABCDEFGHIJKLMNOPQ");
    EXPECT_EQ(bytesIn(record),
              controlRecord({{0, "54 45 53 4B"},
                             {4, "04 00 00 00"},
                             {24, "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F"}}));
}

TEST(BusControlRecord, NumbersInAReplyAreLittleEndian) {
    const Bytes reply = bytesOf("01 02 03 04 FF FE FD FC");
    EXPECT_EQ(busNumberAt(reply, 0), 0x04030201);
    EXPECT_EQ(busNumberAt(reply, 4), 0xFCFDFEFF);
}

} // namespace

} // namespace zolt::test
