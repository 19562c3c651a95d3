// The subjects of a check. Each function adds what it finds.
#pragma once

#include "zolt_board/finding.h"
#include "zolt_board/reader_view.h"

namespace zolt_board {

void checkSlots(const ReaderView& board, Findings& findings);
void checkPayloads(const ReaderView& board, Findings& findings);
void checkOemAreas(const ReaderView& board, Findings& findings);
void checkRiserMap(const ReaderView& board, Findings& findings);
void checkRegisters(const ReaderView& board, Findings& findings);
void checkNodes(const ReaderView& board, Findings& findings);
void checkService(const ReaderView& board, Findings& findings);

} // namespace zolt_board
