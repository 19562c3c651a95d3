#include "sdbusplus/message.hpp"

#include "wire.h"

#include <gtest/gtest.h>

#include <limits>

namespace sdbusplus::test {
namespace {

template <typename... Contents>
message_t holding(const char* signature, Contents... contents) {
    return received(
        [&](sd_bus_message* raw) { return sd_bus_message_append(raw, signature, contents...); });
}

template <typename T>
T read(message_t message) {
    T value{};
    message.read(value);
    return value;
}

TEST(Read, numbersKeepTheirRange) {
    EXPECT_EQ(read<std::uint8_t>(holding("y", 255)), 255);
    EXPECT_EQ(read<std::int16_t>(holding("n", -32768)), -32768);
    EXPECT_EQ(read<std::uint16_t>(holding("q", 65535)), 65535);
    EXPECT_EQ(read<std::int32_t>(holding("i", std::numeric_limits<std::int32_t>::min())),
              std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(read<std::uint32_t>(holding("u", 4294967295U)), 4294967295U);
    EXPECT_EQ(read<std::int64_t>(holding("x", std::numeric_limits<std::int64_t>::min())),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(read<std::uint64_t>(holding("t", std::numeric_limits<std::uint64_t>::max())),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(read<double>(holding("d", -0.5)), -0.5);
}

// A boolean has four bytes on the wire and in sd-bus, but one byte in the program.
TEST(Read, booleanTakesOneByte) {
    struct {
        bool value = false;
        std::uint8_t neighbours[7] = {1, 2, 3, 4, 5, 6, 7};
    } memory;
    holding("b", 1).read(memory.value);
    EXPECT_TRUE(memory.value);
    for (std::uint8_t i = 0; i < 7; ++i) {
        EXPECT_EQ(memory.neighbours[i], i + 1);
    }
    EXPECT_FALSE(read<bool>(holding("b", 0)));
}

TEST(Read, texts) {
    EXPECT_EQ(read<std::string>(holding("s", "")), "");
    EXPECT_EQ(read<std::string>(holding("s", "text")), "text");
    EXPECT_EQ(read<object_path>(holding("o", "/a/b")).str, "/a/b");
}

TEST(Read, severalValuesInTheirOrder) {
    message_t message = holding("ysb", 7, "text", 1);
    std::uint8_t number = 0;
    std::string text;
    message.read(number, text);
    bool truth = false;
    message.read(truth);
    EXPECT_EQ(std::tie(number, text, truth), std::tuple(7, "text", true));
}

TEST(Read, vectors) {
    using Strings = std::vector<std::string>;
    EXPECT_EQ(read<Strings>(holding("as", 0)), Strings());
    EXPECT_EQ(read<Strings>(holding("as", 2, "a", "b")), (Strings{"a", "b"}));
    EXPECT_EQ(read<std::vector<std::uint8_t>>(holding("ay", 0)), std::vector<std::uint8_t>());
    EXPECT_EQ(read<std::vector<std::uint8_t>>(holding("ay", 3, 1, 2, 255)),
              (std::vector<std::uint8_t>{1, 2, 255}));
    EXPECT_EQ(read<std::vector<std::int16_t>>(holding("an", 2, -1, 2)),
              (std::vector<std::int16_t>{-1, 2}));
    EXPECT_EQ(read<std::vector<std::uint64_t>>(holding("at", 1, std::uint64_t{1} << 63)),
              (std::vector<std::uint64_t>{std::uint64_t{1} << 63}));
    EXPECT_EQ(read<std::vector<double>>(holding("ad", 2, 0.25, -1.0)),
              (std::vector<double>{0.25, -1.0}));
    EXPECT_EQ(read<std::vector<bool>>(holding("ab", 3, 1, 0, 1)),
              (std::vector<bool>{true, false, true}));
    EXPECT_EQ(read<std::vector<Strings>>(holding("aas", 2, 1, "a", 0)),
              (std::vector<Strings>{{"a"}, {}}));
}

TEST(Read, tuples) {
    using Six = std::tuple<std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t, std::uint8_t,
                           std::uint8_t>;
    EXPECT_EQ(read<Six>(holding("(yyyyyy)", 1, 2, 3, 4, 5, 6)), Six(1, 2, 3, 4, 5, 6));
    using Mixed = std::tuple<std::string, std::tuple<bool, std::int32_t>, std::vector<std::string>>;
    EXPECT_EQ(read<Mixed>(holding("(s(bi)as)", "text", 1, -1, 1, "a")),
              Mixed("text", {true, -1}, {"a"}));
}

TEST(Read, mapsAreOrderedByTheirKeys) {
    using Numbers = std::map<std::string, std::int32_t>;
    const auto numbers = read<Numbers>(holding("a{si}", 3, "b", 2, "a", 1, "B", 3));
    EXPECT_EQ(numbers, (Numbers{{"B", 3}, {"a", 1}, {"b", 2}}));
    EXPECT_EQ(read<Numbers>(holding("a{si}", 0)), Numbers());
    using ByPath = std::map<object_path, std::map<std::string, std::vector<std::uint8_t>>>;
    EXPECT_EQ(read<ByPath>(holding("a{oa{say}}", 2, "/b", 1, "x", 1, 7, "/a", 0)),
              (ByPath{{object_path("/a"), {}}, {object_path("/b"), {{"x", {7}}}}}));
}

TEST(Read, mapKeepsTheFirstOfTwoEntriesWithTheSameKey) {
    using Numbers = std::map<std::string, std::int32_t>;
    EXPECT_EQ(read<Numbers>(holding("a{si}", 3, "a", 1, "a", 2, "b", 3)),
              (Numbers{{"a", 1}, {"b", 3}}));
}

TEST(Read, readingAppendsToAContainer) {
    std::vector<std::uint8_t> bytes{1};
    holding("ay", 1, 2).read(bytes);
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{1, 2}));
    std::map<std::string, std::int32_t> numbers{{"a", 1}};
    holding("a{si}", 1, "b", 2).read(numbers);
    EXPECT_EQ(numbers, (std::map<std::string, std::int32_t>{{"a", 1}, {"b", 2}}));
}

using BytePair = std::tuple<std::uint8_t, std::uint8_t>;
using Value = std::variant<BytePair, std::uint16_t, std::uint8_t, bool>;

TEST(ReadVariant, takesTheAlternativeThatTheContentsFit) {
    EXPECT_EQ(read<Value>(holding("v", "(yy)", 1, 2)), Value(BytePair(1, 2)));
    EXPECT_EQ(read<Value>(holding("v", "q", 512)), Value(std::uint16_t{512}));
    EXPECT_EQ(read<Value>(holding("v", "y", 7)), Value(std::uint8_t{7}));
    EXPECT_EQ(read<Value>(holding("v", "b", 1)), Value(true));
}

TEST(ReadVariant, thatFitsNoAlternativeIsSkippedAndBecomesTheFirstAlternativesDefault) {
    using Values = std::map<std::string, Value>;
    const auto values =
        read<Values>(holding("a{sv}", 5, "a", "s", "text", "b", "(yyy)", 1, 2, 3, "c", "a{sas}", 1,
                             "k", 2, "x", "y", "d", "v", "q", 5, "e", "y", 9));
    EXPECT_EQ(values, (Values{{"a", BytePair(0, 0)},
                              {"b", BytePair(0, 0)},
                              {"c", BytePair(0, 0)},
                              {"d", BytePair(0, 0)},
                              {"e", std::uint8_t{9}}}));
}

TEST(ReadVariant, thatFitsNoAlternativeLosesItsEarlierValue) {
    Value value = true;
    holding("v", "s", "text").read(value);
    EXPECT_EQ(value, Value(BytePair(0, 0)));
}

TEST(ReadVariant, atTheEndOfTheMessageIsTheFirstAlternativesDefault) {
    Value value = true;
    holding("").read(value);
    EXPECT_EQ(value, Value(BytePair(0, 0)));
}

TEST(ReadVariant, takesTheFirstOfTheAlternativesThatFit) {
    using Nested = std::variant<std::string, std::variant<std::string, std::uint8_t>>;
    const auto nested = read<Nested>(holding("v", "v", "y", 3));
    EXPECT_EQ(std::get<1>(nested), (std::variant<std::string, std::uint8_t>(std::uint8_t{3})));
}

TEST(ReadVariant, takesTheFirstOfTheAlternativesThatFitWhateverCameBefore) {
    using OneOf = std::variant<std::string, std::variant<std::uint8_t>, std::variant<bool>>;
    const auto values =
        read<std::vector<OneOf>>(holding("av", 4, "v", "y", 3, "s", "text", "v", "b", 1, "q", 5));
    EXPECT_EQ(values, (std::vector<OneOf>{std::variant<std::uint8_t>(std::uint8_t{3}), "text",
                                          std::variant<std::uint8_t>(), std::string()}));
}

TEST(ReadVariant, holdsEveryKindOfContents) {
    using Any = std::variant<std::string, std::int64_t, double, std::vector<std::string>,
                             std::vector<double>, std::vector<bool>>;
    EXPECT_EQ(read<Any>(holding("v", "s", "text")), Any(std::string("text")));
    EXPECT_EQ(read<Any>(holding("v", "x", std::int64_t{-5})), Any(std::int64_t{-5}));
    EXPECT_EQ(read<Any>(holding("v", "d", 0.5)), Any(0.5));
    EXPECT_EQ(read<Any>(holding("v", "as", 1, "a")), Any(std::vector<std::string>{"a"}));
    EXPECT_EQ(read<Any>(holding("v", "ad", 1, 0.5)), Any(std::vector<double>{0.5}));
    EXPECT_EQ(read<Any>(holding("v", "ab", 2, 0, 1)), Any(std::vector<bool>{false, true}));
}

// Reads a message from a big-endian sender.
template <typename T>
T readBigEndian(const char* signature, std::initializer_list<std::uint8_t> body) {
    return read<T>(receivedBigEndian(signature, body));
}

TEST(ReadBigEndian, numbersAndTexts) {
    EXPECT_EQ(readBigEndian<std::uint16_t>("q", {0x12, 0x34}), 0x1234);
    EXPECT_EQ(readBigEndian<std::int32_t>("i", {0xFF, 0xFF, 0xFF, 0xFE}), -2);
    EXPECT_EQ(readBigEndian<std::uint64_t>("t", {1, 2, 3, 4, 5, 6, 7, 8}), 0x0102030405060708U);
    EXPECT_EQ(readBigEndian<bool>("b", {0, 0, 0, 1}), true);
    EXPECT_EQ(readBigEndian<std::string>("s", {0, 0, 0, 2, 'a', 'b', 0}), "ab");
}

TEST(ReadBigEndian, vectors) {
    EXPECT_EQ(readBigEndian<std::vector<std::uint8_t>>("ay", {0, 0, 0, 3, 1, 2, 255}),
              (std::vector<std::uint8_t>{1, 2, 255}));
    EXPECT_EQ(readBigEndian<std::vector<std::int16_t>>("an", {0, 0, 0, 4, 0xFF, 0xFE, 1, 2}),
              (std::vector<std::int16_t>{-2, 0x0102}));
    EXPECT_EQ(readBigEndian<std::vector<std::uint32_t>>("au", {0, 0, 0, 4, 1, 2, 3, 4}),
              (std::vector<std::uint32_t>{0x01020304}));
    EXPECT_EQ(readBigEndian<std::vector<double>>(
                  "ad", {0, 0, 0, 8, 0, 0, 0, 0, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0}),
              (std::vector<double>{0.5}));
    EXPECT_EQ(readBigEndian<std::vector<bool>>("ab", {0, 0, 0, 8, 0, 0, 0, 1, 0, 0, 0, 0}),
              (std::vector<bool>{true, false}));
}

TEST(ReadBigEndian, variantsInAMap) {
    using Numbers = std::variant<std::string, std::vector<std::uint16_t>>;
    const auto values = readBigEndian<std::map<std::string, Numbers>>(
        "a{sv}", {0, 0, 0, 20, 0,   0, 0,    0,             // 20 bytes of entries, padding
                  0, 0, 0, 1,  'a', 0, 2,    'a',  'q',  0, // "a", of signature "aq"
                  0, 0, 0, 0,  0,   4, 0x12, 0x34, 0x56, 0x78});
    EXPECT_EQ(values,
              (std::map<std::string, Numbers>{{"a", std::vector<std::uint16_t>{0x1234, 0x5678}}}));
}

// The message holds a value of another type than the reader asks for, or no value.
TEST(ReadFailure, namesTheCallAndTheKindOfValue) {
    const std::string mismatch = ": System.Error.ENXIO: No such device or address";
    const auto errorOfReading = [&]<typename T>(std::type_identity<T>, message_t message) {
        return errorOf([&] { (void)read<T>(std::move(message)); });
    };
    EXPECT_EQ(errorOfReading(std::type_identity<std::uint16_t>(), holding("y", 1)),
              "sd_bus_message_read_basic fundamental" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<std::uint16_t>(), holding("")),
              "sd_bus_message_read_basic fundamental" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<bool>(), holding("y", 1)),
              "sd_bus_message_read_basic bool" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<std::string>(), holding("o", "/")),
              "sd_bus_message_read_basic string" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<object_path>(), holding("s", "/")),
              "sd_bus_message_read_basic string" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<std::vector<std::string>>(), holding("ao", 0)),
              "sd_bus_message_enter_container emplace_back_container" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<std::vector<std::uint8_t>>(), holding("an", 0)),
              "sd_bus_message_enter_container emplace_back_container" + mismatch);
    EXPECT_EQ(
        errorOfReading(std::type_identity<std::map<std::string, Value>>(), holding("a{ss}", 0)),
        "sd_bus_message_enter_container emplace_container" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<BytePair>(), holding("(yq)", 1, 2)),
              "sd_bus_message_enter_container tuple" + mismatch);
    EXPECT_EQ(errorOfReading(std::type_identity<Value>(), holding("q", 1)),
              "sd_bus_message_skip variant" + mismatch);
}

TEST(ReadFailure, messageUnderConstructionCannotBeRead) {
    Peer peer([](sd_bus_message*, void*, sd_bus_error*) { return 1; });
    message_t open = peer.bus().new_method_call("a.b", "/", "a.b", "C");
    Value value;
    EXPECT_EQ(errorOf([&] { open.read(value); }),
              "sd_bus_message_verify_type variant: org.freedesktop.DBus.Error.AccessDenied: "
              "Operation not permitted");
}

} // namespace
} // namespace sdbusplus::test
