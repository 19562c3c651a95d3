#include "app/dispatcher.h"

#include "app/interactive.h"
#include "app/menus.h"
#include "tests/support/console.h"
#include "tests/support/platform.h"

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <stdexcept>

namespace zolt {
namespace {

using test::outputOf;
using test::platform;

constexpr const char* unable = "Unable to perform the desired operation\n";
constexpr const char* unreadable = "\nscanf errorUnable to perform the desired operation\n";

class Dispatcher : public testing::Test {
protected:
    Dispatcher() { test::resetPlatform(); }

    // Makes slot 42 an empty slot. Option 1 then prints the ID that it ran with.
    static void fitSlot42() { platform().named["PICPWR_42_DSTAT"] = {0}; }
    static constexpr const char* slot42 = "\nPICPWR 42 DSTAT              = 00b\n";

    static std::string run(const OptionArgs& given, std::string_view input = "") {
        return outputOf([&] { runOption(given); }, input);
    }
};

TEST_F(Dispatcher, unknownOptionsDoNothing) {
    for (const std::uint8_t option : std::initializer_list<std::uint8_t>{0, 16, 99, 100, 255}) {
        EXPECT_EQ(run({.option = option}, "x"), "");
    }
    EXPECT_TRUE(platform().calls.empty());
}

TEST_F(Dispatcher, theLastOptionRuns) {
    EXPECT_EQ(run({.option = 15}, "x"),
              std::string("Enter Node Num:\nInvalid Device Type\n") + unable);
}

TEST_F(Dispatcher, givenIdIsNotAskedFor) {
    fitSlot42();
    EXPECT_EQ(run({.option = 1, .picpwrId = 42}, "x"), slot42);
}

TEST_F(Dispatcher, missingIdIsAskedFor) {
    fitSlot42();
    EXPECT_EQ(run({.option = 1}, "42\n"),
              std::string("Enter the PICPWR ID: (Enter 0 for all PICPWRs)") + slot42);
}

TEST_F(Dispatcher, answeredIdIsAnUnsignedByte) {
    EXPECT_EQ(run({.option = 1}, "-1\n"), "Enter the PICPWR ID: (Enter 0 for all PICPWRs)");
    EXPECT_TRUE(platform().calls.empty()); // there is no slot 255
}

TEST_F(Dispatcher, whoTypesTheIdAlsoChoosesTheDisplay) {
    platform().named["PICPWR_42_DSTAT"] = {1};
    platform().named["PICPWR_42_PAYLOAD_OFFSET"] = {0, 0};
    platform().hal["PICPWR_PAYLOADS"].content = test::Bytes(376);
    const std::string absent = "OEM area is not present for this PICPWR\n\n\n";
    EXPECT_EQ(run({.option = 3, .picpwrId = 42, .format = 2}, "3\n"), absent);
    EXPECT_EQ(run({.option = 3, .format = 2}, "42\n3\n"),
              "Enter the PICPWR ID:1 : Raw Dump\n2 : Human Readable\n3 : Go Back\n" + absent);
}

struct Asking {
    OptionArgs given;
    std::string prompt;
};

std::vector<Asking> askingOptions() {
    const std::string pickOne = "Enter the PICPWR ID:";
    const std::string pickOneOrAll = "Enter the PICPWR ID: (Enter 0 for all PICPWRs)";
    return {
        {{.option = 1}, pickOneOrAll},
        {{.option = 2}, pickOne},
        {{.option = 3, .format = 2}, pickOne},
        {{.option = 5}, outputOf(printModuleClassMenu)},
        {{.option = 6}, pickOneOrAll},
        {{.option = 7}, outputOf(printDeviceTypeMenu)},
        {{.option = 7, .deviceType = 166}, outputOf(printDeviceTypeMenu)},
        {{.option = 8, .deviceType = 255}, outputOf(printDeviceTypeMenu)},
        {{.option = 12}, outputOf(printModuleTypeMenu)},
    };
}

TEST_F(Dispatcher, answerThatIsNoNumberPrintsBothErrorLines) {
    for (const Asking& asking : askingOptions()) {
        EXPECT_EQ(run(asking.given, "x"), asking.prompt + unreadable);
    }
    EXPECT_TRUE(platform().calls.empty());
}

TEST_F(Dispatcher, payloadId63IsTheHighest) {
    platform().named["PICPWR_63_DSTAT"] = {0};
    for (const std::uint8_t option : std::initializer_list<std::uint8_t>{2, 3}) {
        EXPECT_EQ(run({.option = option}, "63"),
                  std::string("Enter the PICPWR ID:"
                              "\nDISCOVERY_STATUS (DSTAT) = 0 for PICPWR 63\n") +
                      unable);
    }
}

TEST_F(Dispatcher, payloadIdsAbove63AreRefusedWithoutARead) {
    for (const std::uint8_t option : std::initializer_list<std::uint8_t>{2, 3}) {
        for (const char* const answer : {"64", "-1", "255", "100"}) {
            EXPECT_EQ(run({.option = option}, answer),
                      std::string("Enter the PICPWR ID:") + unable);
        }
    }
    EXPECT_TRUE(platform().calls.empty());
}

TEST_F(Dispatcher, failedOperationIsReportedOnce) {
    platform().named["PICPWR_42_DSTAT"] = {3};
    for (const char* const name :
         {"_DBYP", "_DPEN", "_APEN", "_ASTAT", "_MOD_CLASS", "_MOD_CLASS_IDX"}) {
        platform().named[std::string("PICPWR_42") + name] = {0};
    }
    EXPECT_EQ(run({.option = 1, .picpwrId = 42}),
              "\n"
              "PICPWR 42 DSTAT              = 11b\n"
              "PICPWR 42 DBYP               = 0\n"
              "PICPWR 42 DPEN               = 0\n"
              "PICPWR 42 APEN               = 0\n"
              "PICPWR 42 ASTAT              = 0\n"
              "PICPWR 42 Module Class       = 0x00\n"
              "PICPWR 42 Module Class Index = 0\n"
              "Unable to read PICPWR payload offset using CPLD raw API, status 5\n"
              "Unable to perform the desired operation\n");
}

TEST_F(Dispatcher, standardExceptionIsPrintedByTheGuardAlone) {
    platform().thrown = std::make_exception_ptr(std::bad_alloc());
    EXPECT_THROW((void)run({.option = 1, .picpwrId = 42}), std::bad_alloc);
    EXPECT_EQ(outputOf([] { runOptionGuarded({.option = 1, .picpwrId = 42}); }),
              "Exception : std::bad_alloc\n");
}

TEST_F(Dispatcher, exceptionOfAnotherKindPassesTheGuard) {
    platform().thrown = std::make_exception_ptr(42);
    EXPECT_EQ(outputOf([] { EXPECT_THROW(runOptionGuarded({.option = 1, .picpwrId = 42}), int); }),
              "");
}

TEST_F(Dispatcher, exceptionDoesNotEndTheMenu) {
    platform().thrown = std::make_exception_ptr(std::bad_alloc());
    const std::string menu = outputOf(printMainMenu);
    EXPECT_EQ(outputOf(runInteractive, "1 42 16 100"),
              menu + "Enter the PICPWR ID: (Enter 0 for all PICPWRs)" +
                  "Exception : std::bad_alloc\n" + menu + menu);
}

TEST_F(Dispatcher, aCallbackThatCannotBeTakenBackEndsTheOptionNotTheMenu) {
    platform().named = {{"PICPWR_42_DSTAT", {3}},
                        {"PICPWR_42_MOD_CLASS", {1}},
                        {"PICPWR_42_PAYLOAD_OFFSET", {0, 0}}};
    platform().hal["PICPWR_PAYLOADS"] = {
        .content = test::Bytes(400),
        .callbackRegistered = true,
        .thrownByUnregister = std::make_exception_ptr(std::runtime_error("still in use"))};
    const std::string menu = outputOf(printMainMenu);
    const std::string ended = menu + "Enter the PICPWR ID:Exception : still in use\n";
    EXPECT_EQ(outputOf(runInteractive, "2 42 3 42 16 100"), ended + ended + menu + menu);
}

} // namespace
} // namespace zolt
