// Captures a board whose every call ends as the input says, and loads the description. A capture
// may fail only with an exception that the platform throws. The loader must accept each
// description, and the lines about failed reads must be safe for a terminal and of bounded length.
#include "board/board_loader.h"
#include "board/message_text.h"
#include "capture/describe.h"
#include "capture/mask.h"
#include "capture/read_board.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/whole_tool/session.h"

#include <cstdio>
#include <new>
#include <optional>
#include <stdexcept>

namespace {

using zolt::fuzz::Bytes;
using zolt::fuzz::require;

const capture::Head head{.date = "2026-11-22 03:00 UTC", .version = "1", .masked = false};

std::vector<capture::NodeProperty> propertiesOf(Bytes& bytes) {
    std::vector<capture::NodeProperty> properties(bytes.take() % 4);
    // Linux has no bus of a higher number, and a description cannot have one.
    constexpr std::uint32_t buses = 0x100000;
    for (capture::NodeProperty& property : properties) {
        property = {
            .bus = bytes.take32() % buses, .target = bytes.take() % 0x80U, .id = bytes.take32()};
    }
    return properties;
}

std::optional<capture::Observation> observationOf(Bytes bytes) {
    const auto properties = propertiesOf(bytes);
    zolt::fuzz::Session current{.board = bytes};
    std::optional<capture::Observation> observation;
    zolt::fuzz::session = &current;
    try {
        observation = capture::readBoard(properties, capture::noProgress);
    } catch (const std::bad_alloc&) {
        observation.reset();
    } catch (const std::length_error&) {
        observation.reset();
    }
    zolt::fuzz::session = nullptr;
    require(current.trees == 0 && current.objects == 0);
    return observation;
}

void requireLoadable(const capture::Observation& observation) {
    const std::string description = describe(observation, head);
    try {
        (void)board::parseBoard(description, "capture.toml");
    } catch (const board::BoardError& error) {
        (void)std::fprintf(stderr, "%s\n", error.what());
        std::abort();
    }
    constexpr std::size_t longest = 1'000;
    for (const std::string& line : failuresIn(observation)) {
        require(line.size() <= longest && board::printable(line) == line);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const bool masks = bytes.take() % 2 != 0;
    if (auto observation = observationOf(bytes)) {
        requireLoadable(masks ? capture::masked(std::move(*observation)) : *observation);
    }
    return 0;
}
