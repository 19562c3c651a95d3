// The lines that the tool may print.
#pragma once

#include <cstddef>
#include <string_view>

namespace zolt::fuzz {

/// Requires that the tool may print @p output. A line without its numbers has to be in a dialogue
/// of tests/transcripts, or in a short list of others. Text of the board, such as the name of a
/// node, may have any bytes, up to its longest length, at the places for it.
/// @return the number of prompts; each of them waits for the operator
std::size_t checkLines(std::string_view output);

} // namespace zolt::fuzz
