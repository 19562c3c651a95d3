#include "platform/hal.h"

#include "console/output.h"
#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

// Counts the allocations of one size, which no other text in these tests has.
constexpr std::size_t countedSize = 1000;
std::size_t counted = 0;

} // namespace

void* operator new(std::size_t size) {
    counted += size == countedSize ? 1 : 0;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace zolt {
namespace {

using test::Bytes;
using test::platform;
using Calls = std::vector<std::string>;

constexpr const char* blockName = "PICPWR_PAYLOADS";

class HalCfgdata : public testing::Test {
protected:
    HalCfgdata() { test::resetPlatform(); }

    // Makes a handle for one read, as the views do.
    std::int32_t read(std::uint32_t length, std::uint32_t offset) {
        HAL_cfgdata handle(blockName);
        const std::int32_t status = handle.ReadIO(buffer_, length, offset);
        handle.Release();
        return status;
    }

    Bytes buffer_;
};

TEST_F(HalCfgdata, readsThroughTheObject) {
    platform().hal[blockName].content = {1, 2, 3, 4, 5};
    EXPECT_EQ(read(3, 1), 0);
    EXPECT_EQ(buffer_, (Bytes{2, 3, 4}));
    EXPECT_EQ(platform().calls, (Calls{"ReadHALConfig PICPWR_PAYLOADS",
                                       "ReadIO PICPWR_PAYLOADS 3 1", "delete PICPWR_PAYLOADS"}));
    EXPECT_EQ(platform().log, Calls{"5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"});
}

TEST_F(HalCfgdata, asksOnceMoreForAMissingObject) {
    platform().hal[blockName] = {.content = {1}, .missingAsks = 1};
    EXPECT_EQ(read(1, 0), 0);
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                     "ReadIO PICPWR_PAYLOADS 1 0", "delete PICPWR_PAYLOADS"}));
}

TEST_F(HalCfgdata, missingObjectIsLoggedAndFails) {
    EXPECT_EQ(read(1, 0), -1);
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS"}));
    ASSERT_EQ(platform().log.size(), 1U);
    std::string line = platform().log[0]; // with the number of the source line taken out
    const std::size_t end = line.find(".ReadIO:");
    ASSERT_NE(end, std::string::npos);
    const std::size_t number = line.rfind('.', end - 1) + 1;
    EXPECT_GT(std::stoi(line.substr(number, end - number)), 0);
    line.erase(number, end - number);
    EXPECT_EQ(line, "2 273 hal_cfgdata.cpp..ReadIO: [ReadIO]: ERROR, halData is NULL");
}

TEST_F(HalCfgdata, statusOfTheObjectIsTheResult) {
    platform().hal[blockName] = {.content = {1}, .readStatus = 6};
    EXPECT_EQ(read(1, 0), 6);
    EXPECT_EQ(platform().log, Calls{"5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"});
}

TEST_F(HalCfgdata, unregistersACallbackBeforeItDeletesTheObject) {
    platform().hal[blockName] = {
        .content = {1}, .callbackRegistered = true, .unregisterStatus = -3};
    EXPECT_EQ(read(1, 0), 0);
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 1 0",
                     "UnregisterInterruptCallback PICPWR_PAYLOADS", "delete PICPWR_PAYLOADS"}));
    EXPECT_EQ(
        platform().log,
        (Calls{"5 273 [~HAL_cfgdata]: UnregisterInterruptCallback for [PICPWR_PAYLOADS], ret= -3",
               "5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"}));
}

TEST_F(HalCfgdata, textIsHandedOutBeforeTheLibraryIsAsked) {
    platform().hal[blockName] = {.content = {1}, .callbackRegistered = true};
    (void)test::outputOf([&] {
        HAL_cfgdata handle(blockName);
        write("read ");
        EXPECT_EQ(handle.ReadIO(buffer_, 1, 0), 0);
        write("release ");
        handle.Release();
    });
    EXPECT_EQ(platform().printed, (Calls{"read ", "read ", "read release ", "read release "}));
}

TEST_F(HalCfgdata, anExceptionOfTheCallbackPassesOnceTheObjectIsGone) {
    platform().hal[blockName] = {.content = {1},
                                 .callbackRegistered = true,
                                 .thrownByUnregister =
                                     std::make_exception_ptr(std::runtime_error("still in use"))};
    EXPECT_THROW(read(1, 0), std::runtime_error);
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 1 0",
                     "UnregisterInterruptCallback PICPWR_PAYLOADS", "delete PICPWR_PAYLOADS"}));
    EXPECT_EQ(platform().log, Calls{"5 273 [~HAL_cfgdata]: Deleted halData for [PICPWR_PAYLOADS]"});
}

TEST_F(HalCfgdata, theEndOfAHandleReleasesItsObjectAndSwallowsTheException) {
    platform().hal[blockName] = {.content = {1},
                                 .callbackRegistered = true,
                                 .thrownByUnregister =
                                     std::make_exception_ptr(std::runtime_error("still in use"))};
    {
        HAL_cfgdata handle(blockName);
        EXPECT_EQ(handle.ReadIO(buffer_, 1, 0), 0);
    }
    EXPECT_EQ(platform().calls.back(), "delete PICPWR_PAYLOADS");
}

TEST_F(HalCfgdata, aReleasedHandleAsksForAnObjectAnew) {
    platform().hal[blockName].content = {1, 2};
    HAL_cfgdata handle(blockName);
    EXPECT_EQ(handle.ReadIO(buffer_, 1, 0), 0);
    handle.Release();
    handle.Release();
    EXPECT_EQ(handle.ReadIO(buffer_, 1, 1), 0);
    EXPECT_EQ(platform().calls,
              (Calls{"ReadHALConfig PICPWR_PAYLOADS", "ReadIO PICPWR_PAYLOADS 1 0",
                     "delete PICPWR_PAYLOADS", "ReadHALConfig PICPWR_PAYLOADS",
                     "ReadIO PICPWR_PAYLOADS 1 1"}));
}

TEST_F(HalCfgdata, releaseCopiesNoName) {
    const std::string longName(countedSize - 1, 'N'); // its terminator makes it the counted size
    platform().hal[longName] = {.content = {1}, .callbackRegistered = true};
    std::size_t before = 0;
    {
        HAL_cfgdata handle(longName);
        EXPECT_EQ(handle.ReadIO(buffer_, 1, 0), 0);
        before = counted;
        EXPECT_GT(before, 0U);
    }
    EXPECT_EQ(counted, before);
    EXPECT_EQ(platform().calls.back(), "delete " + longName);
}

TEST_F(HalCfgdata, unusedHandleAsksAndLogsNothing) {
    { const HAL_cfgdata handle(blockName); }
    EXPECT_TRUE(platform().calls.empty());
    EXPECT_TRUE(platform().log.empty());
}

} // namespace
} // namespace zolt
