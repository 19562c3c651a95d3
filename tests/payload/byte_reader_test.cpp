#include "payload/byte_reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace zolt::byte_reader_test {
namespace {

constexpr std::size_t farAway = std::numeric_limits<std::size_t>::max();

TEST(ByteReader, hasNoByteBeyondTheEnd) {
    const std::vector<std::uint8_t> bytes{7, 8};
    const ByteReader reader(bytes);
    EXPECT_EQ(reader.byte(0), 7);
    EXPECT_EQ(reader.byte(1), 8);
    EXPECT_EQ(reader.byte(2), std::nullopt);
    EXPECT_EQ(reader.byte(farAway), std::nullopt);
}

TEST(ByteReader, withoutBytesHasOnlyTheEmptyText) {
    const ByteReader reader({});
    EXPECT_EQ(reader.byte(0), std::nullopt);
    EXPECT_EQ(reader.text(0, 1), std::nullopt);
    EXPECT_EQ(reader.text(0, 0), "");
}

TEST(ByteReader, textEndsAtItsFirstNulOrItsField) {
    const std::vector<std::uint8_t> bytes{'a', 'b', 0, 'c', 'd'};
    const ByteReader reader(bytes);
    EXPECT_EQ(reader.text(0, 5), "ab");
    EXPECT_EQ(reader.text(0, 2), "ab");
    EXPECT_EQ(reader.text(2, 3), "");
    EXPECT_EQ(reader.text(3, 2), "cd");
}

TEST(ByteReader, textWhoseNulIsThereIsThereThoughItsFieldIsNot) {
    const std::vector<std::uint8_t> bytes{'a', 0, 'b', 0};
    const ByteReader reader(bytes);
    EXPECT_EQ(reader.text(0, 5), "a");
    EXPECT_EQ(reader.text(2, farAway), "b");
    EXPECT_EQ(reader.text(3, 2), "");
}

TEST(ByteReader, textThatIsCutBeforeItsNulIsMissing) {
    const std::vector<std::uint8_t> bytes{0, 'a', 'b'};
    const ByteReader reader(bytes);
    EXPECT_EQ(reader.text(1, 2), "ab"); // it fills its field
    EXPECT_EQ(reader.text(1, 3), std::nullopt);
    EXPECT_EQ(reader.text(2, farAway), std::nullopt);
    EXPECT_EQ(reader.text(3, 1), std::nullopt);
    EXPECT_EQ(reader.text(4, 1), std::nullopt);
    EXPECT_EQ(reader.text(farAway, 1), std::nullopt);
}

} // namespace
} // namespace zolt::byte_reader_test
