// Prints the hexadecimal dump of a whole file: hex_dump_bench FILE.
#include "console/hex_dump.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool readFile(const char* path, std::vector<std::uint8_t>& bytes) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(status.st_size));
    const bool whole = read(file, bytes.data(), bytes.size()) == status.st_size;
    close(file);
    return whole;
}

} // namespace

int main(int argc, char* argv[]) {
    std::vector<std::uint8_t> bytes;
    if (argc != 2 || !readFile(argv[1], bytes)) {
        (void)std::fprintf(stderr, "usage: hex_dump_bench FILE\n");
        return EXIT_FAILURE;
    }
    zolt::printHexDump(0, bytes, static_cast<std::uint32_t>(bytes.size()));
    return EXIT_SUCCESS;
}
