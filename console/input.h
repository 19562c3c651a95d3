// Answers from standard input.
//
// Every call first hands out everything printed so far, so that a program which drives the tool
// over a pipe sees the prompt before the tool waits. Text that is not a number stays in the input.
// Without a number the answer keeps the value that it had.
#pragma once

#include <cstdint>

namespace zolt {

/// What came of a question. Callers differ in what they make of the end of input: most take the
/// answer as it stood before, a sub-menu takes it for a failed read.
enum class Reading : std::uint8_t { number, notANumber, endOfInput };

/// Reads a decimal number into its low 8 bits ("%hhd").
[[nodiscard]] Reading readByte(std::int8_t& answer);

/// Reads a decimal number ("%d").
[[nodiscard]] Reading readDecimal(int& answer);

/// Reads a hexadecimal number, with or without a 0x prefix ("%x").
[[nodiscard]] Reading readHexadecimal(unsigned& answer);

} // namespace zolt
