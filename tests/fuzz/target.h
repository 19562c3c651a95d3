// The entry points of a fuzz target. libFuzzer calls them, and so does the replay of a corpus.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// Called once, before the first input. Leaves the command line as it is.
int LLVMFuzzerInitialize(int* argc, char*** argv);

/// Runs the code under test on one input. A defect that shows ends the program.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
}
