#include "sdbusplus/bus.hpp"

#include "wire.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace sdbusplus::test {
namespace {

// Answers Echo with the call's text in brackets, and refuses any other member.
int echo(sd_bus_message* call, void*, sd_bus_error* error) {
    if (sd_bus_message_is_method_call(call, "a.b", "Echo") == 0) {
        return sd_bus_error_setf(error, "a.b.NoSuchMember", "no member %s",
                                 sd_bus_message_get_member(call));
    }
    const char* text = nullptr;
    int result = sd_bus_message_read_basic(call, 's', static_cast<void*>(&text));
    if (result < 0) {
        return result;
    }
    return sd_bus_reply_method_return(call, "s", (std::string("[") + text + "]").c_str());
}

int never(sd_bus_message*, void*, sd_bus_error*) {
    return 1;
}

TEST(Bus, callReturnsTheReply) {
    Peer peer(echo);
    message_t request = peer.bus().new_method_call("a.b", "/", "a.b", "Echo");
    request.append("hello");
    message_t reply = peer.bus().call(request);
    EXPECT_TRUE(reply);
    EXPECT_FALSE(reply.is_method_error());
    std::string text;
    reply.read(text);
    EXPECT_EQ(text, "[hello]");
}

TEST(Bus, callThatIsRefusedThrowsTheErrorOfTheReply) {
    Peer peer(echo);
    message_t request = peer.bus().new_method_call("a.b", "/", "a.b", "Nothing");
    EXPECT_EQ(errorOf([&] { (void)peer.bus().call(request); }),
              "sd_bus_call: a.b.NoSuchMember: no member Nothing");
    // The connection still works.
    message_t next = peer.bus().new_method_call("a.b", "/", "a.b", "Echo");
    next.append("again");
    EXPECT_TRUE(peer.bus().call(next));
}

TEST(Bus, callThatIsNotAnsweredInTimeThrows) {
    Peer peer(never);
    message_t request = peer.bus().new_method_call("a.b", "/", "a.b", "Echo");
    EXPECT_EQ(errorOf([&] { (void)peer.bus().call(request, 1000); }),
              "sd_bus_call: org.freedesktop.DBus.Error.Timeout: Connection timed out");
}

TEST(Bus, callWithoutAMessageThrows) {
    Peer peer(never);
    message_t nothing(nullptr);
    EXPECT_FALSE(nothing);
    EXPECT_EQ(errorOf([&] { (void)peer.bus().call(nothing); }),
              "sd_bus_call: org.freedesktop.DBus.Error.InvalidArgs: Invalid argument");
}

TEST(Bus, invalidPathIsRefusedWhenTheCallIsCreated) {
    Peer peer(never);
    EXPECT_EQ(errorOf([&] { (void)peer.bus().new_method_call("a.b", "", "a.b", "Echo"); }),
              "sd_bus_message_new_method_call: org.freedesktop.DBus.Error.InvalidArgs: "
              "Invalid argument");
}

TEST(Bus, thatCannotBeReachedFailsAtTheFirstCall) {
    ASSERT_EQ(setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1), 0);
    bus_t bus = bus::new_default_system();
    EXPECT_EQ(errorOf([&] { (void)bus.new_method_call("a.b", "/", "a.b", "Echo"); }),
              "sd_bus_message_new_method_call: System.Error.ENOTCONN: "
              "Transport endpoint is not connected");
}

} // namespace
} // namespace sdbusplus::test
