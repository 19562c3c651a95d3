#include "zolt_board/check_board.h"

#include "zolt_board/reader_view.h"
#include "zolt_board/subjects.h"

namespace zolt_board {

namespace {

constexpr void (*subjects[])(const ReaderView& board, Findings& findings) = {
    checkSlots,     checkPayloads, checkOemAreas, checkRiserMap,
    checkRegisters, checkNodes,    checkService,
};

} // namespace

Findings check(const board::Board& board) {
    const ReaderView view(board);
    Findings findings;
    for (const auto& subject : subjects) {
        subject(view, findings);
    }
    return findings;
}

} // namespace zolt_board
