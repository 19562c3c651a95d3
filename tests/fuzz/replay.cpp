// Runs a fuzz target on every input of its corpus, so that a defect found by fuzzing stays mended.
#include "tests/fuzz/target.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " CORPUS\n";
        return EXIT_FAILURE;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        if (!file) {
            std::cerr << entry.path() << " cannot be read\n";
            return EXIT_FAILURE;
        }
        std::cerr << entry.path().filename() << '\n'; // a crash follows its input's name
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++inputs;
    }
    std::cerr << inputs << " inputs\n";
    return inputs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
