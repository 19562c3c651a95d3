// Work on many items on all processors, with the results in the order of the items.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace zolt_board {

/// What the work on an item has to tell.
struct WorkResult {
    std::string text{};
    std::string complaint{}; ///< empty: none
};

/// The results that may wait to be taken, for each thread. On a busy machine the calling thread may
/// get its turn late; until then, the others have something to do.
constexpr std::size_t waitingPerThread = 32;

/// Calls @p work for each item from 0 on, on as many threads as there are processors, and @p take
/// with each result, in the order of the items, on the calling thread.
/// @param work  must not throw
/// @param take  may throw: then the running work ends, and the exception goes to the caller
void workInOrder(std::size_t items, const std::function<WorkResult(std::size_t item)>& work,
                 const std::function<void(std::size_t item, const WorkResult& result)>& take);

} // namespace zolt_board
