#include "capture/riser_map.h"

#include "capture/registers.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <string>

namespace capture {
namespace {

using zolt::test::platform;

constexpr const char* blobName = "RISER_SLOT_AMP_BLOB";

class RiserMap : public testing::Test {
protected:
    RiserMap() { zolt::test::resetPlatform(); }

    static Observation read() {
        Observation observation;
        readRiserMap(observation, noProgress);
        return observation;
    }

    // Fills the registers of the blob's first bytes. The reader passes sign-extended addresses.
    static void fillRegisters(std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            platform().raw[0xFFFF8A00 + i] = static_cast<std::uint8_t>(i);
        }
    }
};

TEST_F(RiserMap, aNamedAreaIsReadInOneCall) {
    platform().named[blobName] = {1, 2, 3};
    fillRegisters(1024);
    const Observation observation = read();
    EXPECT_EQ(platform().calls, std::vector<std::string>{std::string("ReadIO_Str ") + blobName});
    EXPECT_EQ(observation.named.at(blobName).bytes, (Bytes{1, 2, 3}));
    EXPECT_TRUE(observation.rawBytes.empty());
}

TEST_F(RiserMap, theSmallerOfTheDeliveredAndTheStatedSizeCounts) {
    platform().named[blobName] = {1, 2, 3};
    platform().size[blobName] = 2;
    EXPECT_EQ(read().named.at(blobName).bytes, (Bytes{1, 2}));
    platform().size[blobName] = 0xFFFFFFFF;
    EXPECT_EQ(read().named.at(blobName).bytes, (Bytes{1, 2, 3}));
    platform().named[blobName] = Bytes(1'000'000, 7);
    EXPECT_EQ(read().named.at(blobName).bytes, Bytes(mostAreaBytes, 7));
}

TEST_F(RiserMap, theRegistersAreReadOneByOneWhenTheNamedReadFails) {
    fillRegisters(1024);
    const Observation observation = read();
    ASSERT_EQ(platform().calls.size(), 1025U);
    EXPECT_EQ(platform().calls[1], "cpld_read_device 0xFFFF8A00 1");
    EXPECT_EQ(platform().calls[1024], "cpld_read_device 0xFFFF8DFF 1");
    EXPECT_EQ(observation.named.at(blobName).status, -1);
    EXPECT_EQ(observation.named.at(blobName).bytes, Bytes{}); // not the HAL's garbage
    ASSERT_EQ(observation.rawBytes.size(), 1024U);
    EXPECT_EQ(observation.rawBytes.at(0x8A00).bytes, Bytes{0});
    EXPECT_EQ(observation.rawBytes.at(0x8DFF).bytes, Bytes{0xFF});
}

TEST_F(RiserMap, theFirstRegisterThatFailsIsTheLastOneRead) {
    fillRegisters(3);
    platform().rawStatus = -9;
    const Observation observation = read();
    EXPECT_EQ(platform().calls.size(), 5U);
    ASSERT_EQ(observation.rawBytes.size(), 4U);
    EXPECT_EQ(observation.rawBytes.at(0x8A02).status, 0);
    EXPECT_EQ(observation.rawBytes.at(0x8A03).status, -9);
    EXPECT_EQ(observation.rawBytes.at(0x8A03).bytes, Bytes{});
}

} // namespace
} // namespace capture
