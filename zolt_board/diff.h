// The verb "diff": what differs between two boards.
#pragma once

#include "zolt_board/verb.h"

namespace zolt_board {

extern const Verb diffVerb;

} // namespace zolt_board
