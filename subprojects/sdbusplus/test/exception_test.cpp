#include "sdbusplus/exception.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace sdbusplus::exception {
namespace {

struct Expected {
    std::string name;
    std::string description;
    std::string what;
};

void expect(const SdBusError& error, const Expected& expected) {
    EXPECT_EQ(error.name(), expected.name);
    EXPECT_EQ(error.description(), expected.description);
    EXPECT_EQ(error.what(), expected.what);
}

TEST(SdBusError, ofAnErrnoHasTheNameAndTextThatSdBusGivesIt) {
    const Expected expected{
        "System.Error.ENOTCONN", "Transport endpoint is not connected",
        "sd_bus_call: System.Error.ENOTCONN: Transport endpoint is not connected"};
    expect(SdBusError(ENOTCONN, "sd_bus_call"), expected);
    expect(SdBusError(-ENOTCONN, "sd_bus_call"), expected);
}

TEST(SdBusError, ofAnErrnoThatDBusHasAnErrorForHasTheNameOfThatError) {
    expect(SdBusError(-EINVAL, "sd_bus_message_new_method_call"),
           {"org.freedesktop.DBus.Error.InvalidArgs", "Invalid argument",
            "sd_bus_message_new_method_call: org.freedesktop.DBus.Error.InvalidArgs: "
            "Invalid argument"});
}

TEST(SdBusError, ofAnErrorHasItsNameAndText) {
    sd_bus_error error{"a.b.Broken", "it broke", 0};
    expect(SdBusError(&error, "sd_bus_call"),
           {"a.b.Broken", "it broke", "sd_bus_call: a.b.Broken: it broke"});
}

TEST(SdBusError, leavesOutAMissingNameOrText) {
    sd_bus_error nameless{};
    expect(SdBusError(&nameless, "sd_bus_call"), {"", "", "sd_bus_call"});
    sd_bus_error textless{"a.b.Broken", nullptr, 0};
    expect(SdBusError(&textless, "sd_bus_call"), {"a.b.Broken", "", "sd_bus_call: a.b.Broken"});
}

TEST(SdBusError, takesTheErrorOver) {
    sd_bus_error error{};
    ASSERT_LT(sd_bus_error_set(&error, "a.b.Broken", "it broke"), 0);
    expect(SdBusError(&error, "sd_bus_call"),
           {"a.b.Broken", "it broke", "sd_bus_call: a.b.Broken: it broke"});
    EXPECT_EQ(error.name, nullptr);
    EXPECT_EQ(error.message, nullptr);
}

TEST(SdBusError, keepsItsTextsWhenItIsMoved) {
    SdBusError first(EIO, "first");
    SdBusError second(std::move(first));
    expect(second, {"org.freedesktop.DBus.Error.IOError", "Input/output error",
                    "first: org.freedesktop.DBus.Error.IOError: Input/output error"});
    second = SdBusError(ENOTCONN, "second");
    expect(second, {"System.Error.ENOTCONN", "Transport endpoint is not connected",
                    "second: System.Error.ENOTCONN: Transport endpoint is not connected"});
}

TEST(SdBusError, isCaughtAsAnExceptionOfTheLibraryAndOfTheStandard) {
    EXPECT_THROW(details::checked(-EIO, "call"), exception);
    EXPECT_THROW(details::checked(-EIO, "call"), std::exception);
}

TEST(Checked, returnsAResultThatIsNoFailure) {
    EXPECT_EQ(details::checked(0, "call"), 0);
    EXPECT_EQ(details::checked(7, "call"), 7);
}

} // namespace
} // namespace sdbusplus::exception
