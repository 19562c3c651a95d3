// Reads the operator's answers from standard input.
//
// Every call first writes out all text printed so far, so that a program that drives the tool over
// a pipe sees the prompt before the tool waits. Text that is not a number stays in the input.
// Without a number the answer keeps its value.
#pragma once

#include <cstdint>

namespace zolt {

/// The result of a read. Callers treat the end of input in two ways: most use the answer's initial
/// value; the menu of displays treats it as a failed read.
enum class Reading : std::uint8_t { number, notANumber, endOfInput };

/// Reads a decimal number and keeps its low 8 bits ("%hhd").
[[nodiscard]] Reading readByte(std::int8_t& answer);

/// Reads a decimal number ("%d").
[[nodiscard]] Reading readDecimal(int& answer);

/// Reads a hexadecimal number, with or without a 0x prefix ("%x").
[[nodiscard]] Reading readHexadecimal(unsigned& answer);

} // namespace zolt
