// The verb "check": what is wrong with boards.
#pragma once

#include "zolt_board/verb.h"

namespace zolt_board {

extern const Verb checkVerb;

} // namespace zolt_board
