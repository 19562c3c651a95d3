#include "board/payload_block.h"

#include "board/board_loader.h"
#include "tests/board/refusal.h"

#include <gtest/gtest.h>

namespace board {
namespace {

std::vector<int> offsetsOf(const Board& board) {
    std::vector<int> offsets;
    for (const Slot& slot : board.slots) {
        offsets.push_back(slot.payloadOffset);
    }
    return offsets;
}

TEST(PayloadBlock, payloadsWithoutAnOffsetLieOneBehindTheOtherWithAByteBetween) {
    const Board board = test::boardOf(R"(
[[slot]]
id = 5
payload = [1, 2, 3]
[[slot]]
id = 6
[[slot]]
id = 7
payload = [4]
[[slot]]
id = 8
payload_offset = 100
payload = [5, 6]
[[slot]]
id = 9
payload = [7]
)",
                                      "b");
    EXPECT_EQ(offsetsOf(board), (std::vector{0, 0, 4, 100, 103}));
}

TEST(PayloadBlock, payloadsMayTouchAndASlotMayPointAtAnothersBytes) {
    const Board board = test::boardOf(R"(
[[slot]]
id = 1
payload_offset = 10
payload = [1, 2]
[[slot]]
id = 2
payload_offset = 12
oem_area = [3]
[[slot]]
id = 3
payload_offset = 9
payload = [4]
[[slot]]
id = 4
payload_offset = 10
[override.raw]
0x2A0B = 9
)",
                                      "b");
    EXPECT_EQ(offsetsOf(board), (std::vector{10, 12, 9, 10}));
    EXPECT_EQ(board.rawOverrides.at(0x2A0B), 9);
}

TEST(PayloadBlock, refusesPayloadsWithoutRoom) {
    const std::pair<const char*, const char*> cases[] = {
        {"[[slot]]\nid = 1\npayload_offset = 24574\npayload = [1, 2]",
         "b.toml:4: slot: 'payload' at offset 24574 runs past the payload block's 24575 bytes"},
        {"[[slot]]\nid = 1\npayload_offset = 24573\npayload = [1, 2]\noem_area = [3]",
         "b.toml:5: slot: 'oem_area' at offset 24575 runs past the payload block's 24575 bytes"},
        {"[[slot]]\nid = 1\npayload_offset = 65535\noem_area = [3]",
         "b.toml:4: slot: 'oem_area' at offset 65535 runs past the payload block's 24575 bytes"},
        {"[[slot]]\nid = 7\npayload = [1, 2]\noem_area = [3]\n"
         "[[slot]]\nid = 8\npayload_offset = 2\npayload = [4]",
         "b.toml:7: slot: the bytes at offset 2 overlap bytes of slot 7"},
        {"[[slot]]\nid = 7\npayload_offset = 9\npayload = [1, 2]\n"
         "[[slot]]\nid = 8\npayload_offset = 8\npayload = [4]\noem_area = [5, 6, 7]",
         "b.toml:7: slot: the bytes at offset 8 overlap bytes of slot 7"},
    };
    for (const auto& [description, message] : cases) {
        EXPECT_EQ(test::refusalOf(description), message) << description;
    }
}

} // namespace
} // namespace board
