#include "standin/service/value_message.h"

#include "board/bus_value.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {
namespace {

// A message under construction, on a connection without a peer.
class ValueMessage : public testing::Test {
public:
    ValueMessage() {
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
        EXPECT_GE(sd_bus_new(&bus_), 0);
        EXPECT_GE(sd_bus_set_fd(bus_, ends[0], ends[0]), 0);
        EXPECT_GE(sd_bus_start(bus_), 0);
        EXPECT_GE(sd_bus_message_new_method_call(bus_, &message_, "a.b", "/", "a.b", "C"), 0);
        close(ends[1]);
    }
    ~ValueMessage() override {
        sd_bus_message_unref(message_);
        sd_bus_close_unref(bus_);
    }

protected:
    void seal() {
        ASSERT_GE(sd_bus_message_seal(message_, 1, 0), 0);
        ASSERT_GE(sd_bus_message_rewind(message_, 1), 0);
    }

    sd_bus* bus_ = nullptr;
    sd_bus_message* message_ = nullptr;
};

TEST_F(ValueMessage, numbersHaveTheWidthOfTheirSignature) {
    ASSERT_GE(appendValue(message_, "(ynqiuxtbd)",
                          board::listOf(255, -32768, 65535, -2147483648, std::int64_t{4294967295},
                                        std::int64_t{-1}, std::int64_t{-1}, true, 0.5)),
              0);
    seal();
    std::uint8_t y = 0;
    std::int16_t n = 0;
    std::uint16_t q = 0;
    std::int32_t i = 0;
    std::uint32_t u = 0;
    std::int64_t x = 0;
    std::uint64_t t = 0;
    int b = 0;
    double d = 0;
    ASSERT_GE(sd_bus_message_read(message_, "(ynqiuxtbd)", &y, &n, &q, &i, &u, &x, &t, &b, &d), 0);
    EXPECT_EQ(std::tie(y, n, q, i, u, x, t, b, d),
              std::tuple(255, -32768, 65535, -2147483647 - 1, 4294967295U, -1,
                         18446744073709551615U, 1, 0.5));
}

TEST_F(ValueMessage, containersNest) {
    ASSERT_GE(appendValue(
                  message_, "a{s(oa{yv}as)}",
                  board::listOf(
                      board::listOf(
                          "one", board::listOf(
                                     "/a", board::listOf(board::listOf(1, board::listOf("q", 512))),
                                     board::listOf("x"))),
                      board::listOf("two", board::listOf("/b", board::listOf(), board::listOf())))),
              0);
    EXPECT_STREQ(sd_bus_message_get_signature(message_, 1), "a{s(oa{yv}as)}");
    seal();
    const char* one = nullptr;
    const char* a = nullptr;
    const char* x = nullptr;
    const char* two = nullptr;
    const char* b = nullptr;
    std::uint8_t key = 0;
    std::uint16_t value = 0;
    ASSERT_GE(sd_bus_message_read(message_, "a{s(oa{yv}as)}", 2, &one, &a, 1, &key, "q", &value, 1,
                                  &x, &two, &b, 0, 0),
              0);
    EXPECT_STREQ(one, "one");
    EXPECT_STREQ(a, "/a");
    EXPECT_EQ(key, 1);
    EXPECT_EQ(value, 512);
    EXPECT_STREQ(x, "x");
    EXPECT_STREQ(two, "two");
    EXPECT_STREQ(b, "/b");
}

struct Pair {
    const char* signature;
    board::Value value;
};

// Variants in each other, with a number in the innermost one.
board::Value nestedVariants(int count) {
    board::Value value = board::listOf("y", 1);
    while (count-- > 0) {
        value = board::listOf("v", std::move(value));
    }
    return value;
}

// A service that sends deeper values loses its connection.
TEST_F(ValueMessage, variantsNestThirtyTwoDeep) {
    EXPECT_TRUE(board::valueFits("v", nestedVariants(31)));
    EXPECT_FALSE(board::valueFits("v", nestedVariants(32)));
    EXPECT_TRUE(board::valueFits("g", "a{sv}y(ii)"));
    EXPECT_TRUE(board::valueFits("g", ""));
    EXPECT_TRUE(board::valueFits("g", std::string(255, 'y')));
    EXPECT_FALSE(board::valueFits("g", std::string(256, 'y')));
    EXPECT_FALSE(board::valueFits("(" + std::string(255, 'y') + ")",
                                  board::Value::List(255, board::Value(1))));
}

// valueFits(), which needs no message, and appendValue() refuse the same values.
TEST_F(ValueMessage, valuesThatDoNotFitTheirSignatureAreRefused) {
    const std::vector<Pair> pairs{
        {"y", 256},
        {"y", -1},
        {"n", 32768},
        {"q", -1},
        {"i", std::int64_t{2147483648}},
        {"u", -1},
        {"y", "1"},
        {"y", true},
        {"b", 1},
        {"d", 1},
        {"s", 1},
        {"o", "no path"},
        {"as", "text"},
        {"as", board::listOf(1)},
        {"as", board::listOf(1, "text behind the misfit")},
        {"(yy)", board::listOf(1)},
        {"(yy)", board::listOf(1, 2, 3)},
        {"(ys)", board::listOf(1, "text", "one text too many")},
        {"(yy)", 1},
        {"a{sv}", board::listOf(board::listOf("key"))},
        {"v", 1},
        {"v", board::listOf("y")},
        {"v", board::listOf(1, 1)},
        {"v", board::listOf("yy", 1)},
        {"v", board::listOf("y", 256)},
        {"g", "a"},
        {"g", "y)"},
        {"v", nestedVariants(32)},
    };
    for (const auto& [signature, value] : pairs) {
        EXPECT_FALSE(board::valueFits(signature, value)) << signature;
        EXPECT_EQ(appendValue(message_, signature, value), -EINVAL) << signature;
        sd_bus_message* fresh = nullptr; // a message cannot be used after a failure
        ASSERT_GE(sd_bus_message_new_method_call(bus_, &fresh, "a.b", "/", "a.b", "C"), 0);
        sd_bus_message_unref(message_);
        message_ = fresh;
    }
}

TEST_F(ValueMessage, signatureThatIsNotOneCompleteTypeIsRefused) {
    const std::string deep(33, 'a');
    for (const std::string& signature :
         {std::string(), std::string("z"), std::string("h"), std::string("a"), std::string("yy"),
          std::string("("), std::string("()"), std::string("(y"), std::string("(z)"),
          std::string("{sv}"), std::string("a{s}"), std::string("a{svv}"), std::string("a{vs}"),
          std::string("a{ays}"), std::string(")"), deep + "y"}) {
        EXPECT_FALSE(board::valueFits(signature, board::listOf())) << signature;
        EXPECT_EQ(appendValue(message_, signature, board::listOf()), -EINVAL) << signature;
    }
}

TEST(ValueFits, acceptsValuesThatFitTheirSignature) {
    EXPECT_TRUE(board::valueFits("y", 255));
    EXPECT_TRUE(board::valueFits("t", -1));
    EXPECT_TRUE(board::valueFits("o", "/a"));
    EXPECT_TRUE(board::valueFits("g", "a{sv}"));
    EXPECT_TRUE(board::valueFits("ab", board::listOf(true)));
    EXPECT_TRUE(board::valueFits(
        "a{sv}", board::listOf(board::listOf("key", board::listOf("as", board::listOf())))));
    EXPECT_TRUE(board::valueFits(std::string(32, 'a') + "y", board::listOf()));
}

} // namespace
} // namespace standin
