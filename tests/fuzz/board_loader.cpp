// Reads any text as a board description. A description that is accepted is checked. The lines about
// either must be safe for a terminal, and their number and length bounded.
#include "board/board_loader.h"
#include "board/message_text.h"
#include "tests/fuzz/bytes.h"
#include "tests/fuzz/target.h"
#include "zolt_board/check_board.h"

#include <string_view>

namespace {

using zolt::fuzz::require;

void requireLine(std::string_view line) {
    constexpr std::size_t longest = 10'000;
    require(line.size() <= longest);
    require(board::printable(line) == line);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (text.find("base") != std::string_view::npos) {
        return 0; // a base is another file
    }
    try {
        const board::Board board = board::parseBoard(text, "fuzz.toml");
        const auto findings = zolt_board::check(board);
        constexpr std::size_t mostOfRegisters = 4'000; // of slots, registers and riser records
        require(findings.size() <= mostOfRegisters + size);
        for (const zolt_board::Finding& finding : findings) {
            requireLine(zolt_board::lineOf(finding));
        }
    } catch (const board::BoardError& error) {
        requireLine(error.what());
    }
    return 0;
}
