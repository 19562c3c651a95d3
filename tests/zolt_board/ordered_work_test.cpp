#include "zolt_board/ordered_work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace zolt_board {
namespace {

WorkResult numbered(std::size_t item) {
    return {.text = std::to_string(item)};
}

TEST(OrderedWork, takesAllResultsInTheirOrder) {
    for (const std::size_t items : {0U, 1U, 2U, 1000U}) {
        std::vector<std::string> expected;
        for (std::size_t item = 0; item < items; ++item) {
            expected.push_back(std::to_string(item));
        }
        std::vector<std::string> taken;
        workInOrder(items, numbered, [&](std::size_t item, const WorkResult& result) {
            EXPECT_EQ(item, taken.size());
            taken.push_back(result.text);
        });
        EXPECT_EQ(taken, expected);
    }
}

// The first item takes longest. The others may not run far ahead: their results would pile up.
TEST(OrderedWork, waitsForAResultThatIsNotTaken) {
    constexpr std::size_t items = 10'000;
    const std::size_t most = waitingPerThread * std::max(1U, std::thread::hardware_concurrency());
    std::atomic<std::size_t> done = 0;
    std::size_t doneBeforeTheFirst = items;
    workInOrder(
        items,
        [&](std::size_t item) {
            if (item == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
            ++done;
            return WorkResult{};
        },
        [&](std::size_t item, const WorkResult&) {
            if (item == 0) {
                doneBeforeTheFirst = done;
            }
        });
    EXPECT_EQ(done, items);
    // While the first result is taken, the window may move on by one.
    EXPECT_LE(doneBeforeTheFirst, most + 1);
}

TEST(OrderedWork, endsWhenAResultIsNotAccepted) {
    std::atomic<std::size_t> done = 0;
    const auto run = [&] {
        workInOrder(
            1'000'000,
            [&](std::size_t item) {
                ++done;
                return numbered(item);
            },
            [](std::size_t item, const WorkResult&) {
                if (item == 3) {
                    throw std::runtime_error("no room");
                }
            });
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_LT(done, 1000U);
}

} // namespace
} // namespace zolt_board
