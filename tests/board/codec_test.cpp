// The codecs on random and on damaged bytes: a decoded module, written as a description and read
// again, has the same bytes.
#include "board/module_codec.h"
#include "board/module_writer.h"
#include "board/riser_map_codec.h"

#include "board/board_loader.h"
#include "tests/board/random_modules.h"
#include "tests/support/random_cases.h"

#include <gtest/gtest.h>

namespace board {
namespace {

using test::blobOf;
using test::Dice;
using test::randomArea;
using test::randomMap;
using test::randomPayload;

Slot readBack(const DocumentTable& board) {
    return parseBoard(board.toml(), "written.toml").slots.at(0);
}

Slot written(const ModulePayload& payload, const std::optional<OemArea>& area) {
    DocumentTable root;
    DocumentTable& slot = root.append("slot");
    slot.set("id", WrittenNumber{1});
    writeModule(payload, area, slot.table("module"));
    return readBack(root);
}

TEST(ModuleCodec, decodesEveryPayloadThatItEncodes) {
    Dice dice(1);
    for (unsigned run = 0; run < zolt::test::randomCases(2000); ++run) {
        const Bytes bytes = encode(randomPayload(dice));
        const auto payload = decodePayload(bytes);
        ASSERT_TRUE(payload) << testing::PrintToString(bytes);
        ASSERT_EQ(encode(*payload), bytes);
    }
}

TEST(ModuleCodec, decodesEveryAreaThatItEncodes) {
    Dice dice(2);
    for (unsigned run = 0; run < zolt::test::randomCases(2000); ++run) {
        const Bytes bytes = encode(randomArea(dice));
        const auto area = decodeOemArea(bytes);
        ASSERT_TRUE(area) << testing::PrintToString(bytes);
        ASSERT_EQ(encode(*area), bytes);
    }
}

TEST(ModuleCodec, decodedBytesAreTheSameBytesAgain) {
    Dice dice(3);
    unsigned decoded = 0;
    for (unsigned run = 0; run < zolt::test::randomCases(20'000); ++run) {
        Bytes bytes = encode(randomPayload(dice));
        dice.damage(bytes);
        bytes.resize(dice.oneIn(4) ? dice.draw(0, 247) : bytes.size());
        if (const auto payload = decodePayload(bytes)) {
            ++decoded;
            ASSERT_EQ(encode(*payload), bytes);
        }
        Bytes area = encode(randomArea(dice));
        dice.damage(area);
        area.resize(dice.oneIn(4) ? dice.draw(0, 255) : area.size());
        if (const auto oem = decodeOemArea(area)) {
            ++decoded;
            ASSERT_EQ(encode(*oem), area);
        }
    }
    EXPECT_GT(decoded, zolt::test::randomCases(10'000));
}

TEST(ModuleCodec, writtenModulesHaveTheirBytes) {
    Dice dice(4);
    for (unsigned run = 0; run < zolt::test::randomCases(300); ++run) {
        Bytes bytes = encode(randomPayload(dice));
        Bytes area = encode(randomArea(dice));
        if (dice.oneIn(2)) {
            dice.damage(bytes);
            dice.damage(area);
        }
        const auto payload = decodePayload(bytes);
        const auto oem = decodeOemArea(area);
        if (payload && oem) {
            const Slot slot = written(*payload, oem);
            ASSERT_EQ(slot.payload, bytes);
            ASSERT_EQ(slot.oemArea, area);
        }
    }
}

TEST(ModuleCodec, anAreaWithoutDescriptorsIsStillAnArea) {
    const Bytes bytes{3, 0, 0xFD};
    const auto area = decodeOemArea(bytes);
    ASSERT_TRUE(area);
    EXPECT_EQ(written(ModulePayload{}, area).oemArea, bytes);
}

struct Undecodable {
    const char* why;
    Bytes bytes;
};

TEST(ModuleCodec, bytesThatNoModuleHasStayBytes) {
    const Undecodable cases[] = {
        {"empty", {}},
        {"shorter than a header", Bytes(13)},
        {"no whole unit", Bytes(15)},
        {"byte 3 is no field", {0, 0x1A, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE3}},
        {"byte 9 is no field", {0, 0x1A, 2, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0xE3}},
        {"bit 3 of the wires", {0, 0x1A, 2, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0xDC}},
        {"bit 7 of the address", {0, 0x1A, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0x64}},
        {"bytes behind the header", {0, 0x1A, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0xE3}},
        {"a backplane without room", {0, 0x2A, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xD4}},
    };
    for (const Undecodable& bad : cases) {
        EXPECT_FALSE(decodePayload(bad.bytes)) << bad.why;
    }
}

TEST(ModuleCodec, areasThatAreNoListOfDescriptorsStayBytes) {
    const Undecodable cases[] = {
        {"empty", {}},
        {"no room for a checksum", {2, 0}},
        {"longer than an area", Bytes(256)},
        {"a descriptor that is cut off", {6, 1, 1, 4, 0x22, 0}},
        {"half a descriptor", {4, 1, 7, 0}},
        {"more descriptors than the area states", {7, 1, 9, 2, 9, 2, 0}},
    };
    for (const Undecodable& bad : cases) {
        EXPECT_FALSE(decodeOemArea(bad.bytes)) << bad.why;
    }
}

TEST(RiserMapCodec, decodesEveryMappingThatItEncodes) {
    Dice dice(5);
    for (unsigned run = 0; run < zolt::test::randomCases(1000); ++run) {
        const Bytes blob = blobOf(randomMap(dice));
        const auto map = decodeRiserMap(blob);
        ASSERT_TRUE(map);
        ASSERT_EQ(blobOf(*map), blob);
    }
}

TEST(RiserMapCodec, decodedBytesAreTheSameBytesAgain) {
    Dice dice(6);
    unsigned decoded = 0;
    for (unsigned run = 0; run < zolt::test::randomCases(5000); ++run) {
        Bytes blob = blobOf(randomMap(dice));
        dice.damage(blob);
        if (const auto map = decodeRiserMap(blob)) {
            ++decoded;
            ASSERT_EQ(blobOf(*map), blob);
        }
    }
    EXPECT_GT(decoded, zolt::test::randomCases(100));
}

TEST(RiserMapCodec, writtenMappingsHaveTheirBytes) {
    Dice dice(7);
    for (unsigned run = 0; run < zolt::test::randomCases(200); ++run) {
        const Bytes blob = blobOf(randomMap(dice));
        DocumentTable root;
        ASSERT_TRUE(writeRiserMap(decodeRiserMap(blob).value(), root.table("riser_map")));
        ASSERT_EQ(parseBoard(root.toml(), "written.toml").riserMap, blob) << root.toml();
    }
}

TEST(RiserMapCodec, bytesThatNoMappingHasStayBytes) {
    const auto with = [](std::initializer_list<std::pair<std::size_t, std::uint8_t>> changes) {
        Bytes blob = blobOf({.records = {{.dsls = {{.id = 1, .route = {1, 2}}}}}});
        for (const auto& [at, byte] : changes) {
            blob.at(at) = byte;
        }
        return blob;
    };
    ASSERT_TRUE(decodeRiserMap(with({})));
    const Undecodable cases[] = {
        {"another length", Bytes(1023)},
        {"more records than fit", with({{58, 255}})},
        {"a byte of a route that is no field", with({{59 + 24 + 2, 1}})},
        {"a byte behind the checksum", with({{1023, 1}})},
        {"a link without a route in the blob", with({{59 + 20, 255}, {59 + 20 + 256, 255}})},
    };
    for (const Undecodable& bad : cases) {
        EXPECT_FALSE(decodeRiserMap(bad.bytes)) << bad.why;
    }
}

TEST(RiserMapCodec, aTextThatIsNoUtf8IsNotWritten) {
    RiserMap map;
    map.head[descriptionOffset] = 0xFF;
    DocumentTable root;
    EXPECT_FALSE(writeRiserMap(map, root.table("riser_map")));
    EXPECT_EQ(root.toml(), "");
}

} // namespace
} // namespace board
