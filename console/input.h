// Answers from standard input.
//
// Every call first hands out what was printed, so that whoever drives the tool over a pipe sees
// the prompt before the tool waits. A call fails only when the text at hand is not a number; that
// text then stays where it is. At the end of input a call succeeds and leaves the answer as it was:
// the system's reading of scanf, which its operators know.
#pragma once

#include <cstdint>

namespace zolt {

/// Reads a decimal number into its low 8 bits ("%hhd").
[[nodiscard]] bool readByte(std::int8_t& answer);

/// Reads a decimal number ("%d").
[[nodiscard]] bool readDecimal(int& answer);

/// Reads a hexadecimal number, with or without a 0x prefix ("%x").
[[nodiscard]] bool readHexadecimal(unsigned& answer);

} // namespace zolt
