// Writes what the registers of a board showed.
#pragma once

#include "board/board.h"
#include "board/document.h"

namespace capture {

/// Writes control registers as rows, one for each unit with a field that is not 0.
void writeControls(const board::Board& board, board::DocumentTable& root);

/// Writes each slot, with its module field by field where that yields the module's bytes.
void writeSlots(const board::Board& board, board::DocumentTable& root);

void writeRiserMap(const board::Board& board, board::DocumentTable& root);

/// Writes the HAL's object and the overrides.
void writeOverrides(const board::Board& board, board::DocumentTable& root);

} // namespace capture
