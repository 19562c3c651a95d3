// The verb "show": what a board description describes.
#pragma once

#include "zolt_board/verb.h"

namespace zolt_board {

extern const Verb showVerb;

} // namespace zolt_board
