#include "board/fault_rule.h"

#include "board/number.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace board {
namespace {

FaultRule rule(FaultKind kind, std::string subject, std::uint16_t first, std::uint16_t last,
               std::int32_t status, bool once, std::string error = {}) {
    FaultRule expected{.kind = kind, .subject = std::move(subject), .first = first, .last = last};
    expected.status = status;
    expected.error = std::move(error);
    expected.times = once ? 1 : 0;
    return expected;
}

FaultRule busRule(FaultKind kind, std::uint32_t bus, std::uint32_t operation, std::int32_t error,
                  std::optional<std::uint32_t> selector = std::nullopt) {
    FaultRule expected{.kind = kind, .status = error, .bus = bus, .operation = operation};
    expected.selector = selector;
    return expected;
}

FaultRule typeRule(std::uint8_t deviceType, std::int32_t status) {
    FaultRule expected{.kind = FaultKind::sysinfo, .status = status};
    expected.deviceType = deviceType;
    return expected;
}

TEST(FaultRule, everyKind) {
    using enum FaultKind;
    const std::pair<const char*, FaultRule> cases[] = {
        {"named-read *", rule(namedRead, "*", 0, 0, -1, false)},
        {"named-read PICPWR_3_* status 7", rule(namedRead, "PICPWR_3_*", 0, 0, 7, false)},
        {"named-read X status -2147483648", rule(namedRead, "X", 0, 0, INT32_MIN, false)},
        {"i2c-open 5 error EHWPOISON", busRule(i2cOpen, 5, 1, EHWPOISON)},
        {"named-read X once status -9", rule(namedRead, "X", 0, 0, -9, true)},
        {"raw-read 0x1000", rule(rawRead, "", 0x1000, 0x1000, -1, false)},
        {"raw-read 0x1000-0x100D status 5", rule(rawRead, "", 0x1000, 0x100D, 5, false)},
        {"raw-read 0-65535 status 0x10", rule(rawRead, "", 0, 0xFFFF, 16, false)},
        {"hal-object PICPWR_PAYLOADS", rule(halObject, "PICPWR_PAYLOADS", 0, 0, -1, false)},
        {"hal-object PICPWR_PAYLOADS once", rule(halObject, "PICPWR_PAYLOADS", 0, 0, -1, true)},
        {"bus absent", rule(bus, "absent", 0, 0, -1, false)},
        {"service absent", rule(service, "absent", 0, 0, -1, false)},
        {"object bp/bp1", rule(object, "bp/bp1", 0, 0, -1, false)},
        {"object /a error com.E", rule(object, "/a", 0, 0, -1, false, "com.E")},
        {"i2c-open 5", busRule(i2cOpen, 5, 1, EIO)},
        {"i2c-open 1048575 error EBUSY", busRule(i2cOpen, 1048575, 1, EBUSY)},
        {"i2c-ioctl 5 plain", busRule(i2cIoctl, 5, 0, EIO)},
        {"i2c-ioctl 5 plain 0x50 error ENXIO", busRule(i2cIoctl, 5, 0, ENXIO, 0x50)},
        {"i2c-ioctl 0 update-property 7", busRule(i2cIoctl, 0, 4, EIO, 7)},
        {"i2c-ioctl 5 get-property 8 error EACCES", busRule(i2cIoctl, 5, 5, EACCES, 8)},
        {"i2c-ioctl 5 create-node error ENOSPC", busRule(i2cIoctl, 5, 6, ENOSPC)},
        {"i2c-ioctl 5 remove-device 4294967295", busRule(i2cIoctl, 5, 7, EIO, UINT32_MAX)},
        {"i2c-ioctl 5 recover-bus 96", busRule(i2cIoctl, 5, 8, EIO, 96)},
        {"sysinfo PICPWR", typeRule(16, -1)},
        {"sysinfo 164 status 3", typeRule(164, 3)},
        {"sysinfo Backplane", typeRule(19, -1)},
        {"sysinfo FSCP", typeRule(0, -1)},
        {"  hal-read\tX   status  3 ", rule(halRead, "X", 0, 0xFFFF, 3, false)},
        {"hal-read X 0x181-0x2F7 status 3", rule(halRead, "X", 0x181, 0x2F7, 3, false)},
        {"hal-read X 7 once", rule(halRead, "X", 7, 7, -1, true)},
        {"hal-read X 1 times", rule(halRead, "X", 0, 0xFFFF, -1, true)},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(parseFaultRule(text), expected) << text;
    }
}

// When a rule applies, how long the call takes, and whether it fails.
struct Timing {
    std::uint32_t after = 0;
    std::uint32_t times = 0;
    bool untilRecovery = false;
    std::uint32_t delay = 0;
    std::int32_t status = -1;

    bool operator==(const Timing&) const = default;
};

void PrintTo(const Timing& timing, std::ostream* out) {
    *out << "after " << timing.after << ", " << timing.times << " times, recovery "
         << timing.untilRecovery << ", delay " << timing.delay << ", status " << timing.status;
}

TEST(FaultRule, takesTheWordsOfTimeInAnyOrder) {
    const std::pair<const char*, Timing> cases[] = {
        {"named-read X", {}},
        {"named-read X once", {.times = 1}},
        {"named-read X 1 times", {.times = 1}},
        {"named-read X 2147483647 times", {.times = 2147483647}},
        {"raw-read 1 after 3", {.after = 3}},
        {"raw-read 1 after 2147483647", {.after = 2147483647}},
        {"hal-object X after 3 2 times", {.after = 3, .times = 2}},
        {"hal-read X 2 times after 3 status 7", {.after = 3, .times = 2, .status = 7}},
        {"object X once after 1", {.after = 1, .times = 1}},
        {"sysinfo PUCK status 4 after 0x10", {.after = 16, .status = 4}},
        {"i2c-open 5 after 1 until recovery", {.after = 1, .untilRecovery = true, .status = EIO}},
        {"i2c-open 5 3 times until recovery", {.times = 3, .untilRecovery = true, .status = EIO}},
        {"i2c-open 5 delay 1s until recovery", {.untilRecovery = true, .delay = 1000, .status = 0}},
        {"i2c-ioctl 5 plain until recovery", {.untilRecovery = true, .status = EIO}},
        {"i2c-ioctl 5 plain 2 times", {.times = 2, .status = EIO}},
        {"i2c-ioctl 5 plain 0x50 2 times", {.times = 2, .status = EIO}},
        {"i2c-ioctl 5 recover-bus 96 until recovery", {.untilRecovery = true, .status = EIO}},
        {"i2c-ioctl 5 recover-bus 98 2 times until recovery",
         {.times = 2, .untilRecovery = true, .status = EIO}},
        {"i2c-ioctl 5 recover-bus after 4 until recovery",
         {.after = 4, .untilRecovery = true, .status = EIO}},
        {"i2c-ioctl 5 recover-bus delay 5ms until recovery",
         {.untilRecovery = true, .delay = 5, .status = 0}},
        // A delay alone does not fail.
        {"named-read X delay 1s", {.delay = 1000, .status = 0}},
        {"named-read X delay 250ms once", {.times = 1, .delay = 250, .status = 0}},
        {"hal-object X delay 1ms", {.delay = 1, .status = 0}},
        {"object X delay 3600s", {.delay = 3600000, .status = 0}},
        {"sysinfo PUCK delay 3600000ms", {.delay = 3600000, .status = 0}},
        {"raw-read 1 delay forever", {.delay = 0xFFFFFFFF, .status = 0}},
        {"named-read X delay 1s fail", {.delay = 1000}},
        {"named-read X status 9 delay 1s", {.delay = 1000, .status = 9}},
        {"named-read X status 9 delay 1s fail", {.delay = 1000, .status = 9}},
        {"hal-object X fail delay 2s", {.delay = 2000}},
        {"object X error a.b delay 2s", {.delay = 2000}},
        {"i2c-open 5 error EBUSY delay 2s", {.delay = 2000, .status = EBUSY}},
        {"i2c-ioctl 5 plain delay 2s fail", {.delay = 2000, .status = EIO}},
    };
    for (const auto& [text, expected] : cases) {
        const FaultRule rule = parseFaultRule(text);
        EXPECT_EQ((Timing{rule.after, rule.times, rule.untilRecovery, rule.delay, rule.status}),
                  expected)
            << text;
    }
    EXPECT_EQ(parseFaultRule("i2c-ioctl 5 plain 2 times").selector, std::nullopt);
    EXPECT_EQ(parseFaultRule("i2c-ioctl 5 plain 0x50 2 times").selector, 0x50U);
}

TEST(FaultRule, everyRuleWithCallsTakesEveryWordOfTime) {
    for (const char* const start :
         {"named-read X", "raw-read 1", "hal-object X", "hal-read X", "object X", "i2c-open 5",
          "i2c-ioctl 5 plain", "i2c-ioctl 5 recover-bus 98", "sysinfo PUCK"}) {
        for (const char* const words : {"once", "2 times", "after 2", "after 2 2 times", "delay 1s",
                                        "delay forever", "delay 1s fail once after 1"}) {
            EXPECT_NO_THROW((void)parseFaultRule(std::string(start).append(" ").append(words)))
                << start << ' ' << words;
        }
    }
}

TEST(FaultRule, refusesAWordOfTimeThatIsMalformedOrWithoutEffect) {
    const char* const noTime = "'delay' needs a time from 1ms to 3600000ms or from 1s to 3600s, or "
                               "'forever'";
    const char* const noCount = "'times' needs a number from 1 to 2147483647 in front of it";
    const char* const noAfter = "'after' needs a number from 1 to 2147483647";
    const char* const onlyBuses =
        "'until recovery' is for i2c-open and i2c-ioctl: only a bus can be recovered";
    const char* const neverOpens = "a bus that never opens cannot be recovered: 'until recovery' "
                                   "needs 'after N' or 'N times' here";
    const char* const neverRecovers = "recover-bus 98 recovers the bus: 'until recovery' needs "
                                      "another mode, 'after N' or 'N times' here";
    const char* const cannotFail =
        "a call with 'delay forever' never comes back, so it cannot fail";
    const std::pair<std::string, std::string> cases[] = {
        {"named-read X delay", noTime},
        {"named-read X delay 1", noTime},
        {"named-read X delay 0s", noTime},
        {"named-read X delay 0ms", noTime},
        {"named-read X delay 3601s", noTime},
        {"named-read X delay 3600001ms", noTime},
        {"named-read X delay -1s", noTime},
        {"named-read X delay 1.5s", noTime},
        {"named-read X delay 1m", noTime},
        {"named-read X delay s", noTime},
        {"named-read X delay ms", noTime},
        {"named-read X delay 1 s", noTime},
        {"named-read X delay ever", noTime},
        {"named-read X times", noCount},
        {"named-read X 0 times", noCount},
        {"named-read X -1 times", noCount},
        {"named-read X 2147483648 times", noCount},
        {"named-read X two times", noCount},
        {"named-read X times 2", noCount},
        {"named-read X after", noAfter},
        {"named-read X after 0", noAfter},
        {"named-read X after once", noAfter},
        {"named-read X after 2147483648", noAfter},
        {"named-read X 2", "'2' is not understood here"},
        {"named-read X 2 time", "'2' is not understood here"},
        {"named-read X once 2 times", "'once' or 'times' is given twice"},
        {"named-read X 2 times 2 times", "'once' or 'times' is given twice"},
        {"named-read X after 1 after 1", "'after' is given twice"},
        {"named-read X delay 1s delay 1s", "'delay' is given twice"},
        {"i2c-open 5 until recovery until recovery", "'until' is given twice"},
        {"i2c-open 5 until", "'until' needs the word 'recovery'"},
        {"i2c-open 5 until sunrise", "'until' needs the word 'recovery'"},
        {"named-read X until recovery", onlyBuses},
        {"object X until recovery", onlyBuses},
        {"sysinfo PUCK until recovery", onlyBuses},
        {"i2c-open 5 until recovery", neverOpens},
        {"i2c-open 5 until recovery delay forever", neverOpens},
        {"i2c-ioctl 5 recover-bus until recovery", neverRecovers},
        {"i2c-ioctl 5 recover-bus 98 until recovery error EBUSY", neverRecovers},
        {"i2c-ioctl 5 recover-bus delay forever until recovery", neverRecovers},
        {"named-read X fail", "'fail' has no effect: a rule without 'delay' always fails"},
        {"named-read X fail fail delay 1s", "'fail' is given twice"},
        {"named-read X delay forever fail", cannotFail},
        {"named-read X status 3 delay forever", cannotFail},
        {"object X error a.b delay forever", cannotFail},
        {"i2c-open 5 delay forever error EBUSY", cannotFail},
        {"bus absent once", "'bus absent' describes the whole run, and takes no 'once'"},
        {"bus absent 2 times", "'bus absent' describes the whole run, and takes no 'times'"},
        {"bus absent delay 1s", "'bus absent' describes the whole run, and takes no 'delay'"},
        {"service absent after 3",
         "'service absent' describes the whole run, and takes no 'after'"},
        {"service absent fail", "'service absent' describes the whole run, and takes no 'fail'"},
        {"service absent until recovery",
         "'service absent' describes the whole run, and takes no 'until'"},
        {"service absent now", "'now' is not understood here"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            (void)parseFaultRule(text);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const FaultRuleError& error) {
            EXPECT_EQ(error.what(), reason) << text;
        }
    }
}

TEST(FaultRule, refusesWithAReason) {
    const char* const kinds = "a fault begins with one of: named-read, raw-read, hal-object, "
                              "hal-read, bus, service, object, i2c-open, i2c-ioctl, sysinfo";
    const char* const noStatus =
        "'status' needs a number from -2147483648 to 2147483647, and not 0";
    const char* const noErrno = "'error' needs the name of an errno, like EIO";
    const char* const commands = "i2c-ioctl needs one of: plain, update-property, get-property, "
                                 "create-node, remove-device, recover-bus";
    const std::pair<std::string, std::string> cases[] = {
        {"", kinds},
        {"  ", kinds},
        {"named", kinds},
        {"named-read", "named-read needs a name pattern"},
        {"named-read " + std::string(256, '*'), "a name pattern has at most 255 characters"},
        {"raw-read", "raw-read needs an address or a range of addresses"},
        {"hal-read", "hal-read needs an object's name"},
        {"hal-read X 0x10000", "'0x10000' is not a byte or a range of bytes (0x0000 to 0xFFFF)"},
        {"hal-read X 2-1", "address range '2-1' runs backwards"},
        {"hal-read X 2 3", "'3' is not understood here"},
        {"raw-read here", "'here' is not a raw address or a range of addresses (0x0000 to 0xFFFF)"},
        {"raw-read 0x10000",
         "'0x10000' is not a raw address or a range of addresses (0x0000 to 0xFFFF)"},
        {"raw-read 1-", "'1-' is not a raw address or a range of addresses (0x0000 to 0xFFFF)"},
        {"raw-read -1", "'-1' is not a raw address or a range of addresses (0x0000 to 0xFFFF)"},
        {"raw-read 1-2-3",
         "'1-2-3' is not a raw address or a range of addresses (0x0000 to 0xFFFF)"},
        {"raw-read 2-1", "address range '2-1' runs backwards"},
        {"named-read X status", noStatus},
        {"named-read X status 0", noStatus},
        {"named-read X status one", noStatus},
        {"named-read X status 2147483648", noStatus},
        {"named-read X status -2147483649", noStatus},
        {"named-read X once once", "'once' or 'times' is given twice"},
        {"named-read X once status 1 once", "'once' or 'times' is given twice"},
        {"raw-read 1 status 1 status 1", "'status' is given twice"},
        {"object X error a error b", "'error' is given twice"},
        {"i2c-open 5 error EIO error EIO", "'error' is given twice"},
        {"named-read X twice", "'twice' is not understood here"},
        {"bus", "bus needs 'absent'"},
        {"service gone", "'gone' is not understood here, only 'absent' is"},
        {"object", "object needs an object's path"},
        {"object X error", "'error' needs a name"},
        {"object X error Failed", "'Failed' is no error name of D-Bus"},
        {"object X error a..b", "'a..b' is no error name of D-Bus"},
        {"object bp/bp-1", "'bp/bp-1' is no object path of D-Bus"},
        {"object bp//bp1", "'bp//bp1' is no object path of D-Bus"},
        {"object bp/", "'bp/' is no object path of D-Bus"},
        {"named-read X onec", "'onec' is not understood here; did you mean 'once'?"},
        {"named-read X error E", "'error' is not understood here"},
        {"hal-object X status 3", "'status' is not understood here"},
        {"i2c-open", "i2c-open needs a bus number"},
        {"i2c-open five", "'five' is no bus number"},
        {"i2c-open 1048576", "'1048576' is no bus number"},
        {"i2c-open 5 error", noErrno},
        {"i2c-open 5 error 2", noErrno},
        {"i2c-open 5 error ENOSUCHTHING", noErrno},
        {"i2c-open 5 error EACES", std::string(noErrno) + "; did you mean 'EACCES'?"},
        {"i2c-open 5 status 2", "'status' is not understood here"},
        {"i2c-open 5 plain", "'plain' is not understood here"},
        {"i2c-ioctl 5", commands},
        {"i2c-ioctl 5 error EIO", commands},
        {"i2c-ioctl 5 plain x", "'x' is not understood here"},
        {"i2c-ioctl 5 plain 1 2", "'2' is not understood here"},
        {"sysinfo", "sysinfo needs a device type"},
        {"sysinfo 165", "'165' is no device type"},
        {"sysinfo Backplanes", "'Backplanes' is no device type; did you mean 'Backplane'?"},
        {"sysinfo puk", "'puk' is no device type; did you mean 'PUCK'?"},
        {"sysinfo BP error EIO", "'error' is not understood here"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            (void)parseFaultRule(text);
            ADD_FAILURE() << "accepted: " << text;
        } catch (const FaultRuleError& error) {
            EXPECT_EQ(error.what(), reason) << text;
        }
    }
}

TEST(Number, decimalAndHexadecimalWithinLimits) {
    EXPECT_EQ(numberIn("42", 0, 100), 42);
    EXPECT_EQ(numberIn("0xfF", 0, 255), 255);
    EXPECT_EQ(numberIn("-0x10", -16, 0), -16);
    EXPECT_EQ(numberIn("-2147483648", INT32_MIN, 0), INT32_MIN);
    EXPECT_EQ(numberIn("4294967295", 0, UINT32_MAX), UINT32_MAX);
    for (const char* const text : {"", "-", "0x", "x", "1.0", "1 ", " 1", "0b1", "101", "-1",
                                   "99999999999999999999", "--1", "0x-1"}) {
        EXPECT_EQ(numberIn(text, 0, 100), std::nullopt) << text;
    }
}

} // namespace
} // namespace board
