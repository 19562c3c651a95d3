#include "zolt_board/check.h"
#include "zolt_board/diff.h"
#include "zolt_board/show.h"
#include "zolt_board/verb.h"

namespace zolt_board {

std::span<const Verb* const> verbs() {
    static constexpr const Verb* all[] = {&showVerb, &checkVerb, &diffVerb};
    return all;
}

} // namespace zolt_board
