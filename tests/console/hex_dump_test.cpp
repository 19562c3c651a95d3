#include "console/hex_dump.h"

#include "console/output.h"
#include "tests/support/console.h"

#include <gtest/gtest.h>

#include <numeric>

namespace zolt {
namespace {

const std::string header = "\n+             0  1  2  3  4  5  6  7 :  8  9  A  B  C  D  E  F\n"
                           "--------------------------------------------------------------\n";

std::vector<std::uint8_t> counting(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

struct Dump {
    const char* name;
    std::uint64_t base;
    std::vector<std::uint8_t> bytes;
    std::uint32_t count;
    std::string lines;
};

class HexDump : public testing::TestWithParam<Dump> {};

TEST_P(HexDump, prints) {
    const Dump& dump = GetParam();
    EXPECT_EQ(test::outputOf([&] { printHexDump(dump.base, dump.bytes, dump.count); }),
              header + dump.lines);
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, HexDump,
    testing::Values(Dump{"noBytes", 0x100, {}, 0, "\n\n"}, //
                    Dump{"zeroOfFourBytes", 0x100, counting(4), 0, "\n\n"},
                    Dump{"oneByte", 0x91002A01, {0xE9}, 1, "0x91002a01 = e9 \n\n"},
                    Dump{"sevenBytes", 0, counting(7), 7, "0x00000000 = 00 01 02 03 04 05 06 \n\n"},
                    Dump{"eightBytesEndInTheSeparator", 0, counting(8), 8,
                         "0x00000000 = 00 01 02 03 04 05 06 07 : \n\n"},
                    Dump{"sixteenBytesEndTheirLine", 0x10, counting(16), 16,
                         "0x00000010 = 00 01 02 03 04 05 06 07 : 08 09 0a 0b 0c 0d 0e 0f \n\n\n"},
                    Dump{"fullLineAtABase", 0x100, counting(16), 16,
                         "0x00000100 = 00 01 02 03 04 05 06 07 : 08 09 0a 0b 0c 0d 0e 0f \n\n\n"},
                    Dump{"seventeenBytes", 0x10, counting(17), 17,
                         "0x00000010 = 00 01 02 03 04 05 06 07 : 08 09 0a 0b 0c 0d 0e 0f \n"
                         "0x00000020 = 10 \n\n"},
                    Dump{"baseBeyondEightDigits", 0x100000000, counting(1), 1,
                         "0x100000000 = 00 \n\n"},
                    Dump{"baseOfSixteenDigits", 0xFEDCBA9876543210, counting(1), 1,
                         "0xfedcba9876543210 = 00 \n\n"},
                    Dump{"twoOf32Bytes", 0, counting(32), 2, "0x00000000 = 00 01 \n\n"},
                    Dump{"countAboveTheBytes", 0, counting(2), 300, "0x00000000 = 00 01 \n\n"}),
    [](const auto& tested) { return tested.param.name; });

TEST(HexDump, addressesCrossEightDigitsWithinADump) {
    EXPECT_EQ(test::outputOf([] { printHexDump(0xFFFFFFF0, counting(17), 17); }),
              header + "0xfffffff0 = 00 01 02 03 04 05 06 07 : 08 09 0a 0b 0c 0d 0e 0f \n"
                       "0x100000000 = 10 \n\n");
}

// The dump is several times longer than the output buffer. The test checks every line.
TEST(HexDump, largeDumpHasEveryLine) {
    const std::size_t lines = 5000;
    const auto bytes = counting(16 * lines);
    const std::string output =
        test::outputOf([&] { printHexDump(0, bytes, static_cast<std::uint32_t>(bytes.size())); });
    std::string expected = header;
    for (std::size_t line = 0; line < lines; ++line) {
        char text[128];
        int length = std::snprintf(text, sizeof text, "0x%08zx = ", 16 * line);
        for (std::size_t i = 0; i < 16; ++i) {
            length += std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length),
                                    "%02x %s", bytes[16 * line + i], i == 7 ? ": " : "");
        }
        expected.append(text).append("\n");
    }
    EXPECT_TRUE(output == expected + "\n\n");
}

TEST(HexDump, waitsInTheBuffer) {
    (void)test::outputOf([] {
        printHexDump(0, counting(32), 32);
        EXPECT_EQ(test::handedOut(), "");
    });
}

// The longest lines meet the end of the output buffer at each of their letters. A sanitizer sees a
// line that needs more room than it asked for.
TEST(HexDump, longLinesFitTheOutputBuffer) {
    constexpr std::size_t lineLength = 72;
    constexpr std::uint32_t byteCount = 16 * 1000;
    const auto bytes = counting(byteCount);
    for (std::size_t before = 0; before < lineLength; ++before) {
        const std::string output = test::outputOf([&] {
            write(std::string(before, 'x'));
            printHexDump(0xFEDCBA9876540000, bytes, byteCount);
        });
        EXPECT_EQ(output.size(), before + header.size() + 1000 * lineLength + 2);
    }
}

} // namespace
} // namespace zolt
