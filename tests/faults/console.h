// The operator of a cell.
#pragma once

namespace faults {

/// Makes @p answers the whole input of the console: lines, each ended by a line feed. The text must
/// live as long as the program.
void setAnswers(const char* answers);

} // namespace faults
