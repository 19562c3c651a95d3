#include "sdbusplus/message.hpp"

#include "wire.h"

#include <gtest/gtest.h>

namespace sdbusplus::test {
namespace {

int nothing(sd_bus_message*) {
    return 0;
}

message_t underConstruction(Peer& peer) {
    return peer.bus().new_method_call("a.b", "/", "a.b", "C");
}

int silent(sd_bus_message*, void*, sd_bus_error*) {
    return 1;
}

TEST(Message, appendsEachValueUnderItsSignature) {
    Peer peer(silent);
    message_t message = underConstruction(peer);
    message.append(true, std::uint8_t{1}, std::int16_t{-2}, std::uint16_t{3}, std::int32_t{-4},
                   std::uint32_t{5}, std::int64_t{-6}, std::uint64_t{7}, 8.5, "nine",
                   std::string("ten"), object_path("/eleven"));
    EXPECT_STREQ(sd_bus_message_get_signature(message.get(), 1), "bynqiuxtdsso");

    ASSERT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
    bool b = false;
    std::uint8_t y = 0;
    std::int16_t n = 0;
    std::uint16_t q = 0;
    std::int32_t i = 0;
    std::uint32_t u = 0;
    std::int64_t x = 0;
    std::uint64_t t = 0;
    double d = 0;
    std::string nine;
    std::string ten;
    object_path eleven;
    message.read(b, y, n, q, i, u, x, t, d, nine, ten, eleven);
    EXPECT_EQ(std::tie(b, y, n, q, i, u, x, t, d, nine, ten, eleven.str),
              std::tuple(true, 1, -2, 3, -4, 5U, -6, 7U, 8.5, "nine", "ten", "/eleven"));
}

TEST(Message, appendThrowsWhenSdBusRefusesTheValue) {
    Peer peer(silent);
    message_t message = underConstruction(peer);
    EXPECT_EQ(errorOf([&] { message.append(object_path("no path")); }),
              "sd_bus_message_append_basic string: org.freedesktop.DBus.Error.InvalidArgs: "
              "Invalid argument");
    ASSERT_GE(sd_bus_message_seal(message.get(), 1, 0), 0);
    const std::string closed = ": org.freedesktop.DBus.Error.AccessDenied: Operation not permitted";
    EXPECT_EQ(errorOf([&] { message.append("text"); }),
              "sd_bus_message_append_basic string" + closed);
    EXPECT_EQ(errorOf([&] { message.append(std::uint8_t{1}); }),
              "sd_bus_message_append_basic fundamental" + closed);
    EXPECT_EQ(errorOf([&] { message.append(true); }), "sd_bus_message_append_basic bool" + closed);
}

TEST(Message, tellsAnErrorReplyFromOtherMessages) {
    Peer peer(silent);
    message_t request = underConstruction(peer);
    ASSERT_GE(sd_bus_message_seal(request.get(), 1, 0), 0);
    sd_bus_message* raw = nullptr;
    const sd_bus_error error{"a.b.Broken", "it broke", 0};
    ASSERT_GE(sd_bus_message_new_method_error(request.get(), &raw, &error), 0);
    EXPECT_TRUE(message_t(raw, std::false_type()).is_method_error());
    EXPECT_FALSE(received(nothing).is_method_error());
}

TEST(Message, holdsAReferenceOfItsOwn) {
    message_t first =
        received([](sd_bus_message* raw) { return sd_bus_message_append(raw, "s", "kept"); });
    message_t second(first.get());
    { const message_t third = message_t(first.get()); }
    std::string text;
    second.read(text);
    EXPECT_EQ(text, "kept");
}

TEST(ObjectPath, isOrderedByItsBytes) {
    EXPECT_LT(object_path("/a"), object_path("/b"));
    EXPECT_LT(object_path("/B"), object_path("/a"));
    EXPECT_LT(object_path("/a"), object_path("/a/b"));
    EXPECT_EQ(object_path("/a"), object_path(std::string("/a")));
    const object_path path("/a");
    const std::string& text = path;
    EXPECT_EQ(text, "/a");
}

} // namespace
} // namespace sdbusplus::test
