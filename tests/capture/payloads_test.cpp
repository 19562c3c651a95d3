#include "capture/payloads.h"

#include "capture/slots.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

namespace capture {
namespace {

using zolt::test::platform;
using Calls = std::vector<std::string>;

constexpr const char* payloadBlock = "PICPWR_PAYLOADS";

// A byte of the payload block by its index: the byte at index 1 has the payload offset 0.
std::uint8_t blockByte(std::uint32_t index) {
    return static_cast<std::uint8_t>(index * 7 + index / 256);
}

Bytes payloadBytes(std::uint16_t offset, std::uint32_t length) {
    Bytes bytes;
    for (std::uint32_t i = 0; i < length; ++i) {
        bytes.push_back(blockByte(offset + 1 + i));
    }
    return bytes;
}

class Payloads : public testing::Test {
protected:
    Payloads() {
        zolt::test::resetPlatform();
        for (unsigned n = 1; n <= 63; ++n) {
            platform().named[nameOf(n, "DSTAT")] = {0};
        }
        auto& content = platform().hal[payloadBlock].content;
        for (std::uint32_t i = 0; i < 0x6000; ++i) {
            content.push_back(blockByte(i));
            platform().raw[0x2A00 + i] = blockByte(i);
        }
    }

    static std::string nameOf(unsigned n, const char* suffix) {
        return "PICPWR_" + std::to_string(n) + "_" + suffix;
    }

    static void fill(unsigned n, std::uint16_t offset, std::uint8_t moduleClass = 0x11) {
        platform().named[nameOf(n, "DSTAT")] = {3};
        platform().named[nameOf(n, "MOD_CLASS")] = {moduleClass};
        platform().named[nameOf(n, "PAYLOAD_OFFSET")] = {static_cast<std::uint8_t>(offset & 0xFF),
                                                         static_cast<std::uint8_t>(offset >> 8)};
    }

    // Reads the payloads. Keeps only the calls for them.
    Observation read() {
        Observation observation;
        readSlots(observation, noProgress);
        platform().calls.clear();
        readPayloads(observation, noProgress);
        return observation;
    }
};

TEST_F(Payloads, aPayloadIsOneBulkRead) {
    fill(5, 0x1234);
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 4661",
                     "delete PICPWR_PAYLOADS"}));
    ASSERT_EQ(observation.payloads.size(), 1U);
    const PayloadReading& reading = observation.payloads[0];
    EXPECT_EQ(reading.slot, 5);
    EXPECT_EQ(reading.offset, 0x1234);
    EXPECT_EQ(reading.length, 375U);
    EXPECT_TRUE(reading.foundObject);
    EXPECT_EQ(reading.hal.status, 0);
    EXPECT_EQ(reading.hal.bytes, payloadBytes(0x1234, 375));
    EXPECT_FALSE(reading.raw.has_value());
    ASSERT_TRUE(observation.payloadBlock.has_value());
    EXPECT_FALSE(observation.payloadBlock->interruptCallback);
}

TEST_F(Payloads, allPayloadsAreReadThroughOneObject) {
    fill(1, 0);
    fill(63, 0x200);
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 1",
                     "ReadIO PICPWR_PAYLOADS 375 513", "delete PICPWR_PAYLOADS"}));
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_EQ(observation.payloads[1].slot, 63);
}

TEST_F(Payloads, slotsAtTheSamePlaceAreReadOnce) {
    fill(1, 0x40);
    fill(2, 0x40);
    const Observation observation = read();
    EXPECT_EQ(platform().calls.size(), 3U);
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_EQ(observation.payloads[1].slot, 2);
    EXPECT_EQ(observation.payloads[1].hal.bytes, payloadBytes(0x40, 375));
}

TEST_F(Payloads, nothingAsksForTheObjectWithoutAModule) {
    const Observation observation = read();
    EXPECT_EQ(platform().calls, Calls{});
    EXPECT_FALSE(observation.payloadBlock.has_value());
    EXPECT_TRUE(observation.payloads.empty());
}

TEST_F(Payloads, slotsWhoseRegistersEndTheReportAreLeftOut) {
    fill(1, 0x40);
    platform().named[nameOf(1, "DSTAT")] = {}; // the report of PICPWR info goes on, the others end
    fill(2, 0x40);
    platform().named[nameOf(2, "PAYLOAD_OFFSET")] = {0x40};
    fill(3, 0x40);
    platform().named.erase(nameOf(3, "PAYLOAD_OFFSET")); // nor can the raw registers be read
    const Observation observation = read();
    EXPECT_EQ(platform().calls, Calls{});
    EXPECT_TRUE(observation.payloads.empty());
}

TEST_F(Payloads, theRawOffsetCountsWhereTheNamedReadFails) {
    fill(3, 0x40);
    platform().named.erase(nameOf(3, "PAYLOAD_OFFSET"));
    platform().raw[0x101F] = 0x80; // 0x1000 + 14 * 2 + 3
    platform().raw[0x1020] = 0x01;
    const Observation observation = read();
    ASSERT_EQ(observation.payloads.size(), 1U);
    EXPECT_EQ(observation.payloads[0].offset, 0x180);
}

TEST_F(Payloads, anObjectThatLoadsLateIsAskedForTwice) {
    fill(1, 0);
    platform().hal[payloadBlock].missingAsks = 1;
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                     "ReadIO PICPWR_PAYLOADS 375 1", "delete PICPWR_PAYLOADS"}));
    EXPECT_TRUE(observation.payloads.at(0).foundObject);
}

TEST_F(Payloads, withoutTheObjectTheBytesAreReadRaw) {
    fill(1, 0);
    fill(2, 0x200);
    platform().hal.clear();
    const Observation observation = read();
    EXPECT_EQ(
        platform().calls,
        (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
               "cpld_read_block_device 0x2A01 375 1", "cpld_read_block_device 0x2C01 375 1"}));
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_FALSE(observation.payloads[1].foundObject);
    ASSERT_TRUE(observation.payloads[1].raw.has_value());
    EXPECT_EQ(observation.payloads[1].raw->bytes, payloadBytes(0x200, 375));
    EXPECT_FALSE(observation.payloadBlock.has_value());
}

TEST_F(Payloads, withoutTheObjectAShorterRawReadIsTriedIfTheLongerOneFails) {
    fill(1, 0x5F00);
    platform().hal.clear();
    const Observation observation = read();
    EXPECT_EQ(
        platform().calls,
        (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
               "cpld_read_block_device 0x8901 375 1", "cpld_read_block_device 0x8901 247 1"}));
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_EQ(observation.payloads[0].raw->status, 5);
    EXPECT_EQ(observation.payloads[0].raw->bytes, Bytes{});
    EXPECT_EQ(observation.payloads[1].length, 247U);
    EXPECT_EQ(observation.payloads[1].raw->bytes, payloadBytes(0x5F00, 247));
}

// The report of the CIR payload reads 247 bytes, which the HAL still has.
TEST_F(Payloads, atTheEndOfTheBlockTheCirPayloadHasAReadOfItsOwn) {
    fill(1, 0x5F00);
    for (std::uint32_t i = 0; i < 0x400; ++i) {
        platform().raw[0x8A00 + i] = 0xEE; // registers behind the block
    }
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 24321",
                     "cpld_read_block_device 0x8901 375 1", "ReadIO PICPWR_PAYLOADS 247 24321",
                     "delete PICPWR_PAYLOADS"}));
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_EQ(observation.payloads[0].hal.status, -1);
    EXPECT_EQ(observation.payloads[0].hal.bytes, Bytes{}); // not the HAL's garbage
    EXPECT_EQ(observation.payloads[0].raw->status, 0);
    EXPECT_EQ(observation.payloads[1].hal.status, 0);
    EXPECT_EQ(observation.payloads[1].hal.bytes, payloadBytes(0x5F00, 247));
    EXPECT_FALSE(observation.payloads[1].raw.has_value());
}

TEST_F(Payloads, aSecondReadTakesTheRawBytesOfTheFirstOne) {
    fill(1, 0x40);
    platform().hal[payloadBlock].readStatus = -4;
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 65",
                     "cpld_read_block_device 0x2A41 375 1", "ReadIO PICPWR_PAYLOADS 247 65",
                     "delete PICPWR_PAYLOADS"}));
    ASSERT_EQ(observation.payloads.size(), 2U);
    EXPECT_EQ(observation.payloads[1].hal.status, -4);
    EXPECT_EQ(observation.payloads[1].raw->bytes, payloadBytes(0x40, 247));
}

TEST_F(Payloads, aModuleWithoutAClassHasNoCirPayloadToRead) {
    fill(1, 0x40, 0);
    platform().hal[payloadBlock].readStatus = -4;
    EXPECT_EQ(read().payloads.size(), 1U);
}

TEST_F(Payloads, fewerBytesAreASuccess) {
    fill(1, 0x5FF0);
    platform().hal[payloadBlock].deliversLess = true;
    const Observation observation = read();
    ASSERT_EQ(observation.payloads.size(), 1U);
    EXPECT_EQ(observation.payloads[0].hal.bytes, payloadBytes(0x5FF0, 15));
}

TEST_F(Payloads, anInterruptCallbackIsRemovedBeforeTheObjectIsDestroyed) {
    fill(1, 0);
    platform().hal[payloadBlock].callbackRegistered = true;
    platform().hal[payloadBlock].unregisterStatus = -3;
    const Observation observation = read();
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 375 1",
                     "UnregisterInterruptCallback PICPWR_PAYLOADS", "delete PICPWR_PAYLOADS"}));
    ASSERT_TRUE(observation.payloadBlock.has_value());
    EXPECT_TRUE(observation.payloadBlock->interruptCallback);
    EXPECT_EQ(observation.payloadBlock->unregisterStatus, -3);
}

TEST_F(Payloads, theObjectIsDestroyedEvenIfRemovingTheCallbackThrows) {
    fill(1, 0);
    platform().hal[payloadBlock].callbackRegistered = true;
    platform().hal[payloadBlock].thrownByUnregister = std::make_exception_ptr(std::bad_alloc());
    EXPECT_THROW(read(), std::bad_alloc);
    EXPECT_EQ(platform().calls.back(), "delete PICPWR_PAYLOADS");
}

} // namespace
} // namespace capture
