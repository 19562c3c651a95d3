// The entry points of a fuzz target: what libFuzzer calls, and the replay of a corpus likewise.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// Called once before any input. Takes and leaves the command line as it is.
int LLVMFuzzerInitialize(int* argc, char*** argv);

/// Runs the code under test on one input. Whatever is wrong with the code ends the program.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
}
